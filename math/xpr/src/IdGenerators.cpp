#include "IdGenerators.h"

#include <velmora/SingletonRegistry.h>
#include <velmora/TSStackIDGenerator.h>

namespace Velmora::Math::Xpr {

namespace {

void deleteGenerator(void* in_pGenerator) {
    delete static_cast<IDGenerator*>(in_pGenerator);
}

/// The generator that stands under the name: another copy of the library in the process may have
/// been first.
IDGenerator* registerGenerator(const char* in_szName) {
    IDGenerator* pGenerator = new TSStackIDGenerator;
    void* pRegistered = SingletonRegistry::getInstance().registerInstance(in_szName, pGenerator,
                                                                          deleteGenerator, 0);
    if (pRegistered != pGenerator) {
        delete pGenerator;
    }
    return static_cast<IDGenerator*>(pRegistered);
}

} // namespace

IDGenerator& expressionIdGenerator() {
    static IDGenerator* const s_pGenerator = registerGenerator("ExpressionIdGenerator::Singleton");
    return *s_pGenerator;
}

IDGenerator& parameterIdGenerator() {
    static IDGenerator* const s_pGenerator = registerGenerator("ParameterIdGenerator::Singleton");
    return *s_pGenerator;
}

} // namespace Velmora::Math::Xpr
