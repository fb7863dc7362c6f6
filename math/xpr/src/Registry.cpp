#include <velmora/math/xpr/Registry.h>

#include <cstdlib>
#include <memory>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/SingletonRegistry.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "RegistryDebug.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.Registry");

namespace {

/// Read once: registrations run while the library loads, before a host can configure logging, and
/// a host that wants to see them says so in the environment.
bool isDebugOn() {
    static const bool s_bOn = isRegistryDebugValue(std::getenv("VELMORA_DEBUG_XPR_REGISTRY"));
    return s_bOn;
}

void destroyRegistry(void* in_pRegistry) {
    delete static_cast<Registry*>(in_pRegistry);
}

// In this order, and ahead of the registrations of the files that are linked behind this one.
[[maybe_unused]] const bool s_bDebugIsRead = (isDebugOn(), true);
[[maybe_unused]] const Registry& s_Registry = Registry::getInstance();

} // namespace

Registry::Registry() : ObjectWithLogger(CachedLLLogger(fileLogger())) {}

Registry::~Registry() = default;

Registry& Registry::getInstance() {
    static Registry* const s_pInstance = [] {
        auto* const pNew = new Registry;
        void* const pHeld = SingletonRegistry::getInstance().registerInstance(
            "Registry::Singleton", pNew, &destroyRegistry, 0);
        if (pHeld != pNew) {
            delete pNew;
        }
        return static_cast<Registry*>(pHeld);
    }();
    return *s_pInstance;
}

bool Registry::registerFunction(const char* in_szName, ExpressionAllocator* in_pAllocator) {
    const Handle<ExpressionAllocator> pAllocator(in_pAllocator);
    if (isDebugOn()) {
        VELMORA_LOG_DEBUG(getLogger(),
                          "Registry::registerFunction"
                              << " : "
                              << "registering function in XPR registry : " << in_szName);
    }
    const Handle<Function> pFunction(makeSample(pAllocator));
    if (pFunction.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(),
                              "!pFunction.isNull()&& \"the registered class is not a function \" "
                              "\"expression.\"");
        return false;
    }
    return registerExpression(in_szName, pAllocator);
}

bool Registry::registerVariable(const char* in_szName, ExpressionAllocator* in_pAllocator) {
    const Handle<ExpressionAllocator> pAllocator(in_pAllocator);
    VELMORA_LOG_DEBUG(getLogger(), "registering variable: " << in_szName);
    const Handle<Variable> pVariable(makeSample(pAllocator));
    if (pVariable.isNull()) {
        VELMORA_ASSERT_FAIL_L(getLogger(),
                              "!pVariable.isNull()&& \"the registered class is not a variable \" "
                              "\"expression.\"");
        return false;
    }
    return registerExpression(in_szName, pAllocator);
}

Handle<Expression> Registry::makeSample(const Handle<ExpressionAllocator>& in_pAllocator) {
    return in_pAllocator.isNull() ? Handle<Expression>()
                                  : Handle<Expression>(in_pAllocator->newExpression());
}

bool Registry::registerExpression(const char* in_szName,
                                  const Handle<ExpressionAllocator>& in_pAllocator) {
    if (in_szName == nullptr) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "0 != in_szName");
        return false;
    }
    if (!m_mapExpressionAllocators.insert(in_szName, in_pAllocator).second) {
        VELMORA_LOG_ERROR(getLogger(), "Failed to add expression: "
                                           << in_szName << ". "
                                           << "An expression with the same name already exists "
                                           << "in the expression registry. ");
        return false;
    }
    return true;
}

Expression* Registry::newExpression(const char* in_szName) const {
    if (in_szName == nullptr) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "0 != in_szName");
        return nullptr;
    }
    const auto iteFound = m_mapExpressionAllocators.find(in_szName);
    if (iteFound == m_mapExpressionAllocators.end()) {
        VELMORA_LOG_DEBUG(getLogger(), "can't find expression: " << in_szName);
        return nullptr;
    }
    return iteFound->second->newExpression();
}

Function* Registry::newFunction(const char* in_szName) const {
    VELMORA_LOG_DEBUG(getLogger(), "Registry::newFunction"
                                       << " : "
                                       << "allocating function: " << in_szName);
    std::unique_ptr<Expression> pExpression(newExpression(in_szName));
    if (!pExpression) {
        return nullptr;
    }
    auto* const pFunction = dynamic_cast<FunctionBaseImpl*>(pExpression.get());
    if (pFunction == nullptr) {
        VELMORA_ASSERT_FAIL_L(getLogger(),
                              "pFunction && \"requested expression is not a function\"");
        return nullptr;
    }
    static_cast<void>(pExpression.release());
    pFunction->setName(in_szName);
    return pFunction;
}

Variable* Registry::newVariable(const char* in_szName) const {
    VELMORA_LOG_DEBUG(getLogger(), "Registry::newVariable"
                                       << " : "
                                       << "allocating variable: " << in_szName);
    std::unique_ptr<Expression> pExpression(newExpression(in_szName));
    if (!pExpression) {
        return nullptr;
    }
    auto* const pVariable = dynamic_cast<VariableImpl*>(pExpression.get());
    if (pVariable == nullptr) {
        VELMORA_ASSERT_FAIL_L(getLogger(),
                              "pVariable && \"requested expression is not a variable\"");
        return nullptr;
    }
    static_cast<void>(pExpression.release());
    pVariable->setName(in_szName);
    return pVariable;
}

void Registry::getNames(std::vector<std::string>& out) const {
    out.clear();
    for (const auto& entry : m_mapExpressionAllocators) {
        out.push_back(entry.first);
    }
}

bool Registry::describe(const char* in_szName, const char* in_szDescription) {
    if (in_szName == nullptr || in_szDescription == nullptr) {
        VELMORA_ASSERT_FAIL_L(getLogger(), "0 != in_szName && 0 != in_szDescription");
        return false;
    }
    if (m_mapExpressionAllocators.find(in_szName) == m_mapExpressionAllocators.end()) {
        return false;
    }
    const auto [iteDescription, bNew] = m_mapDescriptions.insert(in_szName, in_szDescription);
    if (!bNew) {
        (*iteDescription).second = in_szDescription;
    }
    return true;
}

const char* Registry::getDescription(const char* in_szName) const {
    const auto iteFound = m_mapDescriptions.find(in_szName == nullptr ? "" : in_szName);
    return iteFound == m_mapDescriptions.end() ? "" : (*iteFound).second.c_str();
}

std::ostream& Registry::write(std::ostream& out_Stream) const {
    return out_Stream;
}

} // namespace Velmora::Math::Xpr
