// A host may call the operations of a registry in any order, and with null where a pointer goes in:
// an assertion says what is wrong, and nothing else happens.

#include <sstream>
#include <string>
#include <vector>

#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/Registry.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "robustness/CallOrder.h"
#include "robustness/CallPairs.h"

namespace Velmora::Testing {

namespace {

using namespace Math::Xpr;
using namespace CallOrder;

struct OwnRegistry : public Registry {};

struct RegistrySubject {
    struct State {
        bool m_bFunction = false;
        bool m_bVariable = false;
    };
    OwnRegistry m_Registry;
};

TEST(CallOrderTest, Registry) {
    using Call = Operation<RegistrySubject>;
    using State = RegistrySubject::State;
    using FunctionAllocator = Registry::ExpressionAllocatorT<OperatorPlus>;
    using VariableAllocator = Registry::ExpressionAllocatorT<VariableImpl>;
    const char* const NoFunction =
        "!pFunction.isNull()&& \"the registered class is not a function \" \"expression.\"";
    const char* const NoVariable =
        "!pVariable.isNull()&& \"the registered class is not a variable \" \"expression.\"";
    const auto always = [](const char* in_szCondition) {
        return [=](State&) { return Conditions{in_szCondition}; };
    };
    const char* const NullDescription = "0 != in_szName && 0 != in_szDescription";
    const std::vector<Call> vOperations{
        {"registerFunction",
         [](auto& s) { s.m_Registry.registerFunction("f", new FunctionAllocator); },
         [](auto& st) {
             st.m_bFunction = true;
             return Conditions();
         }},
        {"registerFunction of a variable",
         [](auto& s) { s.m_Registry.registerFunction("f", new VariableAllocator); },
         always(NoFunction)},
        {"registerFunction null", [](auto& s) { s.m_Registry.registerFunction("f", nullptr); },
         always(NoFunction)},
        {"registerFunction without a name",
         [](auto& s) { s.m_Registry.registerFunction(nullptr, new FunctionAllocator); },
         always(NullName)},
        {"registerFunction without anything",
         [](auto& s) { s.m_Registry.registerFunction(nullptr, nullptr); }, always(NoFunction)},
        {"registerVariable",
         [](auto& s) { s.m_Registry.registerVariable("v", new VariableAllocator); },
         [](auto& st) {
             st.m_bVariable = true;
             return Conditions();
         }},
        {"registerVariable of a function",
         [](auto& s) { s.m_Registry.registerVariable("v", new FunctionAllocator); },
         always(NoVariable)},
        {"registerVariable null", [](auto& s) { s.m_Registry.registerVariable("v", nullptr); },
         always(NoVariable)},
        {"registerVariable without a name",
         [](auto& s) { s.m_Registry.registerVariable(nullptr, new VariableAllocator); },
         always(NullName)},
        {"newExpression",
         [](auto& s) { const Handle<Expression> p(s.m_Registry.newExpression("f")); },
         nothing<State>},
        {"newExpression null",
         [](auto& s) { EXPECT_EQ(s.m_Registry.newExpression(nullptr), nullptr); },
         always(NullName)},
        {"newFunction", [](auto& s) { const Handle<Function> p(s.m_Registry.newFunction("f")); },
         nothing<State>},
        {"newFunction of a variable",
         [](auto& s) { EXPECT_EQ(s.m_Registry.newFunction("v"), nullptr); },
         [](auto& st) {
             return st.m_bVariable
                        ? Conditions{"pFunction && \"requested expression is not a function\""}
                        : Conditions();
         }},
        {"newFunction null", [](auto& s) { EXPECT_EQ(s.m_Registry.newFunction(nullptr), nullptr); },
         always(NullName)},
        {"newVariable", [](auto& s) { const Handle<Variable> p(s.m_Registry.newVariable("v")); },
         nothing<State>},
        {"newVariable of a function",
         [](auto& s) { EXPECT_EQ(s.m_Registry.newVariable("f"), nullptr); },
         [](auto& st) {
             return st.m_bFunction
                        ? Conditions{"pVariable && \"requested expression is not a variable\""}
                        : Conditions();
         }},
        {"newVariable null", [](auto& s) { EXPECT_EQ(s.m_Registry.newVariable(nullptr), nullptr); },
         always(NullName)},
        {"getNames",
         [](auto& s) {
             std::vector<std::string> vNames;
             s.m_Registry.getNames(vNames);
         },
         nothing<State>},
        {"describe", [](auto& s) { s.m_Registry.describe("f", "a function"); }, nothing<State>},
        {"describe null", [](auto& s) { s.m_Registry.describe(nullptr, "a function"); },
         always(NullDescription)},
        {"describe by null", [](auto& s) { s.m_Registry.describe("f", nullptr); },
         always(NullDescription)},
        {"getDescription", [](auto& s) { EXPECT_NE(s.m_Registry.getDescription("f"), nullptr); },
         nothing<State>},
        {"getDescription null",
         [](auto& s) { EXPECT_STREQ(s.m_Registry.getDescription(nullptr), ""); }, nothing<State>},
        {"write",
         [](auto& s) {
             std::ostringstream stream;
             s.m_Registry.write(stream);
         },
         nothing<State>},
    };
    report("Registry", callPairs(vOperations, {"registerFunction", "registerVariable"}));
}

} // namespace

} // namespace Velmora::Testing
