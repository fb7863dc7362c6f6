#include "OptimizerKeys.h"

#include <locale>
#include <sstream>
#include <string>
#include <utility>

namespace Velmora::Math::Xpr {

namespace {

void writeParameter(std::ostream& out_Stream, const ParameterImpl& in_Parameter) {
    const ParameterImpl& leaf = in_Parameter.getLeafChild();
    out_Stream << '&' << in_Parameter.getName() << '%';
    if (leaf.hasDirectValue()) {
        out_Stream << leaf.getValue();
    } else {
        out_Stream << "paramId: " << leaf.getId();
    }
}

} // namespace

OptimizerKeyTable::Number insertLeafKey(OptimizerKeyTable& inout_Keys,
                                        const ExpressionBaseImpl& in_Leaf) {
    return inout_Keys.insert("#" + std::to_string(in_Leaf.getId()), {});
}

OptimizerKeyTable::Number insertNameKey(OptimizerKeyTable& inout_Keys,
                                        const VariableImpl& in_Variable) {
    return inout_Keys.insert(std::string("#") + in_Variable.getName(), {});
}

OptimizerKeyTable::Number insertFunctionKey(OptimizerKeyTable& inout_Keys,
                                            const FunctionBaseImpl& in_Function,
                                            const OptimizerKeyTable::Numbers& in_vChilds) {
    std::string strHead = std::string("#") + in_Function.getName();
    if (in_Function.getParameterCount() != 0) {
        std::ostringstream stream;
        stream.imbue(std::locale::classic());
        for (auto ite = in_Function.getParameterBegin(); ite != in_Function.getParameterEnd();
             ++ite) {
            writeParameter(stream, *(*ite).second);
        }
        strHead += stream.str();
    }
    return inout_Keys.insert(std::move(strHead), in_vChilds);
}

} // namespace Velmora::Math::Xpr
