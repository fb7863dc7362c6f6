#include "RawExpressions.h"

#include <algorithm>
#include <array>
#include <typeinfo>
#include <unordered_set>
#include <utility>

#include <velmora/LogSite.h>
#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/OperatorDivide.h>
#include <velmora/math/xpr/OperatorIf.h>
#include <velmora/math/xpr/OperatorMinus.h>
#include <velmora/math/xpr/OperatorMultiply.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/OperatorSlice.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/ScriptLoaderStdIO.h>
#include <velmora/math/xpr/ScriptLoaderVFS.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "UncheckedLinks.h"
#include "UnknownFunction.h"
#include "UnknownVariable.h"

namespace Velmora::Math::Xpr {

namespace {

/// A definition of two operators.
constexpr std::size_t NodesPerDefinition = 8;

constexpr const char* Name = "resolver.raw_expressions";

/// Is the object exactly of one of the classes? A host may have derived others.
template <class... Classes, class Object>
bool isOneOf(const Object& in_Object) {
    const std::type_info& type = typeid(in_Object);
    return ((type == typeid(Classes)) || ...);
}

/// What a script can have below a variable, as long as nothing is linked.
bool standsBelowVariables(const ExpressionBaseImpl& in_Node) {
    return isOneOf<Argument, ConstantImpl, UnknownFunction, UnknownVariable, OperatorPlus,
                   OperatorMinus, OperatorMultiply, OperatorDivide, OperatorConcatenate, OperatorIf,
                   OperatorSlice>(in_Node);
}

bool isVariableOfAScript(const ExpressionBaseImpl& in_Node) {
    return isOneOf<VariableImpl>(in_Node);
}

/// Has the input a value that nothing else reads?
bool hasOwnValue(const ExpressionBaseImpl& in_Input) {
    if (in_Input.getChildBegin() == in_Input.getChildEnd()) {
        return false;
    }
    const ExpressionBaseImpl& value = **in_Input.getChildBegin();
    return value.isDomainValue() && value.getParentEnd() - value.getParentBegin() == 1;
}

/// Is all below a function what a script can have there?
bool hasBodyOfAScript(const ExpressionBaseImpl& in_Function) {
    std::unordered_set<const ExpressionBaseImpl*> seen;
    std::vector<const ExpressionBaseImpl*> vPending{&in_Function};
    while (!vPending.empty()) {
        const ExpressionBaseImpl& node = *vPending.back();
        vPending.pop_back();
        for (const auto* p = node.getChildBegin(); p != node.getChildEnd(); ++p) {
            if (!standsBelowVariables(**p)) {
                return false;
            }
            if (seen.insert(p->get()).second) {
                vPending.push_back(p->get());
            }
        }
    }
    return true;
}

/// Does the entry look like one of a script that nobody has used yet?
bool isOfAScript(const ExpressionBaseImpl& in_Root) {
    if (in_Root.getParentBegin() != in_Root.getParentEnd()) {
        return false;
    }
    if (isOneOf<DomainVariableImpl>(in_Root)) {
        return hasOwnValue(in_Root);
    }
    return in_Root.hasSourceInfo() &&
           (isOneOf<VariableImpl>(in_Root) ||
            (isOneOf<ScriptFunctionImpl>(in_Root) && hasBodyOfAScript(in_Root)));
}

bool isCopyingLogged() {
    const auto isLogged = [](const char* in_szLogger) {
        return detail::isSiteEnabled(Logger(in_szLogger), log4cplus::DEBUG_LOG_LEVEL);
    };
    constexpr std::array Loggers{"quillmark.ExpressionImplCopier",
                                 "quillmark.xpr.ExpressionImpl",
                                 "quillmark.math.xpr.ExpressionImpl",
                                 "quillmark.math.xpr.DomainValueImpl",
                                 "quillmark.math.xpr.Dictionnary",
                                 "quillmark.math.xpr.Dictionnary.resolver.raw_expressions"};
    return std::any_of(Loggers.begin(), Loggers.end(), isLogged);
}

} // namespace

RawExpressions::RawExpressions(const Dictionnary& in_Originals, const ScriptLoader& in_Loader)
    : m_Originals(in_Originals),
      m_vOriginals(nodesOf(in_Originals)),
      m_bHasCopies(isCopyingNoticed(in_Loader)),
      m_Loaded(m_bHasCopies ? Dictionnary(in_Originals, Name, false) : Dictionnary(Name)),
      m_Copier(m_bHasCopies ? 0 : in_Originals.size() * NodesPerDefinition) {
    if (m_bHasCopies) {
        return;
    }
    for (const ExpressionBaseImpl* pOriginal : m_vOriginals) {
        if (isVariableOfAScript(*pOriginal)) {
            ++m_uiWaiting;
        } else {
            pOriginal->copy(m_Copier);
        }
    }
}

bool RawExpressions::isCopyingNoticed(const ScriptLoader& in_Loader) const {
    if (isCopyingLogged() ||
        detail::isSiteEnabled(m_Originals.getLogger(), log4cplus::DEBUG_LOG_LEVEL) ||
        !isOneOf<ScriptLoaderStdIO, ScriptLoaderVFS>(in_Loader)) {
        return true;
    }
    auto itepOriginal = m_vOriginals.begin();
    return !std::all_of(m_Originals.begin(), m_Originals.end(), [&](const auto& in_entry) {
        const ExpressionBaseImpl* const pOriginal = *itepOriginal++;
        return pOriginal != nullptr && in_entry.first == pOriginal->getName() &&
               isOfAScript(*pOriginal);
    });
}

/// Nothing but the root leads to what is below the root?
bool RawExpressions::isTreeOfAScript(const ExpressionBaseImpl& in_Root) {
    m_vPending.assign(1, &in_Root);
    while (!m_vPending.empty()) {
        const ExpressionBaseImpl& node = *m_vPending.back();
        m_vPending.pop_back();
        for (const Node* pChild = node.getChildBegin(); pChild != node.getChildEnd(); ++pChild) {
            const ExpressionBaseImpl& child = **pChild;
            if (child.getParentEnd() - child.getParentBegin() != 1 ||
                !m_ScriptKinds.of(child, standsBelowVariables)) {
                return false;
            }
            m_vPending.push_back(&child);
        }
    }
    return true;
}

Handle<ExpressionBaseImpl> RawExpressions::find(const std::string& in_strName) {
    if (!m_bHasCopies) {
        const Node pOriginal(m_Originals.findExpression(in_strName.c_str()));
        if (!pOriginal.isNull()) {
            m_Ahead.enter(*pOriginal);
            return copy(*pOriginal);
        }
    }
    return Node(m_Loaded.findExpression(in_strName.c_str()));
}

Handle<ExpressionBaseImpl> RawExpressions::copy(const ExpressionBaseImpl& in_Original) {
    if (&in_Original == m_pCurrent) {
        return copyCurrent();
    }
    const Node pCopy(m_Copier.getCopy(in_Original));
    if (!pCopy.isNull()) {
        return pCopy;
    }
    // The copies of inputs differ by what they are copied ahead of.
    if (!isTreeOfAScript(in_Original)) {
        copyRest();
        return m_Copier.getCopy(in_Original);
    }
    --m_uiWaiting;
    return in_Original.copy(m_Copier);
}

void RawExpressions::begin(const Node& in_pEntry) {
    if (m_uiWaiting == 0 || !isVariableOfAScript(*in_pEntry)) {
        return;
    }
    if (!isTreeOfAScript(*in_pEntry)) {
        copyRest();
    } else if (m_Copier.getCopy(*in_pEntry).isNull()) {
        --m_uiWaiting;
        m_pCurrent = in_pEntry.get();
    }
    while (m_vOriginals[m_uiBegun++] != in_pEntry.get()) {
    }
}

void RawExpressions::end(bool in_bResolved) {
    if (m_pCurrent != nullptr && !in_bResolved) {
        copyCurrent();
    }
    m_pCurrent = nullptr;
    m_vReplaced.clear();
}

void RawExpressions::copyRest() {
    for (std::size_t ui = m_uiBegun; ui != m_vOriginals.size(); ++ui) {
        m_vOriginals[ui]->copy(m_Copier);
    }
    m_uiWaiting = 0;
}

void RawExpressions::noteReplaced(const Node& in_pParent, const Node& in_pRaw,
                                  const Node& in_pNew) {
    if (m_pCurrent != nullptr) {
        m_vReplaced.push_back({in_pParent, in_pRaw, in_pNew});
    }
}

/// The variable that is being resolved, as it was. What has replaced something raw is copied as if
/// it were that; what replaced several such things is copied as the first of them, and put right
/// behind that.
Handle<ExpressionBaseImpl> RawExpressions::copyCurrent() {
    const ExpressionBaseImpl& original = *std::exchange(m_pCurrent, nullptr);
    ExpressionImplCopier copier;
    // The arguments of a call are replaced ahead of the call.
    for (const Replacement& replacement : m_vReplaced) {
        if (copier.getCopy(*replacement.m_pNew).isNull()) {
            copier.registerCopy(*replacement.m_pNew, replacement.m_pRaw->copy(copier));
        }
    }
    const Node pCopy(original.copy(copier));
    const UncheckedLinks unchecked;
    for (const Replacement& replacement : m_vReplaced) {
        const Handle<Variable> pParent(copier.getCopy(*replacement.m_pParent));
        if (!pParent.isNull()) {
            pParent->setValue(Handle<Expression>(replacement.m_pRaw->copy(copier)));
        }
    }
    m_Copier.registerCopy(original, pCopy);
    return pCopy;
}

Dictionnary& RawExpressions::getLoaded() {
    if (!m_bHasCopies && m_Loaded.size() == 0) {
        for (const auto& entry : m_Originals) {
            m_Loaded.add(entry.second, false);
        }
    }
    return m_Loaded;
}

} // namespace Velmora::Math::Xpr
