#pragma once

#include <string>

#include "robustness/CallOrder.h"
#include "robustness/CallPairs.h"

/// What has to come of the calls of a feature computer and of the evaluator that it shares.
namespace Velmora::Testing::CallOrder {

/// What was said to be the script.
enum class Named { None, Found, Unknown };

/// What reading throws: from the archive library, and when the script can't be set up.
inline constexpr const char* NotReadable = "input stream error";
inline constexpr const char* NotSetUp = "failed to set XPR filename";

/// What an evaluator is ready for.
struct EvaluatorState {
    bool m_bDictionnary = false;
    bool m_bFindsScripts = false;
    bool m_bScript = false; ///< the dictionary in use has the script's definitions
    bool m_bInput = false;  ///< it has the input
    bool m_bLinked = false;
};

/// What an archive holds of a computer, and what a computer knows.
struct ComputerFields {
    bool m_bShared = false;
    bool m_bFeature = true;
    bool m_bInput = false;
    Named m_eScript = Named::None;
};

/// A computer with what it and its evaluators have been told, and what has to come of each call.
struct ComputerState : ComputerFields {
    enum class Uses { Nothing, Own, Hosts };

    EvaluatorState& evaluator() { return m_eUses == Uses::Own ? m_Own : m_Hosts; }

    Conditions addInput() {
        if (evaluator().m_bLinked) {
            return {LinkedAlready};
        }
        if (!evaluator().m_bDictionnary) {
            return {notConfigured("addExpression")};
        }
        evaluator().m_bInput = true;
        return {};
    }

    Conditions addScript() {
        if (evaluator().m_bLinked) {
            return refusedWith(LinkedAlready);
        }
        if (!evaluator().m_bDictionnary) {
            return refusedWith(notConfigured("addScript"));
        }
        if (m_eScript != Named::Found || !evaluator().m_bFindsScripts) {
            return {Refused};
        }
        evaluator().m_bScript = true;
        return {};
    }

    Conditions setUp() {
        m_bSetUp = true;
        Conditions vConditions = m_bInput ? addInput() : Conditions();
        const Conditions vScript = addScript();
        vConditions.insert(vConditions.end(), vScript.begin(), vScript.end());
        if (vScript.empty() && !m_bShared) {
            evaluator().m_bLinked = true;
        }
        return vConditions;
    }

    Conditions setScript(Named in_eScript, bool in_bFiles) {
        if (!m_bShared && m_eUses != Uses::Nothing) {
            return refusedWith(
                "m_bSharedEvaluator || (!m_bSharedEvaluator && m_pEvaluator.isNull())");
        }
        if (in_eScript == Named::None) {
            return refusedWith("in_szFileName");
        }
        m_eScript = in_eScript;
        if (m_bShared && m_eUses == Uses::Nothing) {
            return {};
        }
        if (m_eUses == Uses::Nothing) {
            m_eUses = Uses::Own;
            m_Own.m_bDictionnary = true;
            m_Own.m_bFindsScripts = in_bFiles;
        }
        return setUp();
    }

    Conditions setEvaluator(bool in_bNull) {
        if (m_eUses != Uses::Nothing) {
            return refusedWith("m_pEvaluator.isNull()");
        }
        m_bShared = true;
        m_eUses = in_bNull ? Uses::Nothing : Uses::Hosts;
        return m_eScript == Named::None ? Conditions() : setScript(m_eScript, true);
    }

    Conditions setInputNames(bool in_bInput) {
        if (m_bSetUp) {
            return {Refused};
        }
        m_bInput = in_bInput;
        return {};
    }

    /// What the evaluator in use says before it looks a name up.
    Conditions lookUp(const char* in_szOperation) {
        if (!evaluator().m_bDictionnary) {
            return {notConfigured(in_szOperation)};
        }
        return evaluator().m_bLinked ? Conditions() : Conditions{notLinked(in_szOperation)};
    }

    Conditions setInput(bool in_bName) {
        if (m_eUses == Uses::Nothing) {
            return refusedWith("!m_pEvaluator.isNull()");
        }
        Conditions vConditions = lookUp("getVariable");
        if (vConditions.empty() && !in_bName) {
            vConditions = {NullName};
        }
        if (!vConditions.empty() || !evaluator().m_bInput) {
            vConditions.emplace_back(Refused);
        }
        return vConditions;
    }

    Conditions compute() {
        if (m_bBound) {
            return {};
        }
        // There is no script to name the feature by.
        if (m_eScript != Named::Found) {
            return {Refused};
        }
        Conditions vConditions;
        if (m_eUses != Uses::Nothing) {
            vConditions = lookUp("getExpression");
            m_bBound = vConditions.empty() && evaluator().m_bScript && m_bFeature;
        }
        if (!m_bBound) {
            vConditions.insert(vConditions.end(), {"false", Refused});
        }
        return vConditions;
    }

    /// Reads what was saved, if anything was; a failure leaves a computer that was never set up.
    Conditions read() {
        if (!m_bSaved) {
            return {NotReadable};
        }
        static_cast<ComputerFields&>(*this) = m_Saved;
        // The directory of the archive is what an archive without a script names.
        Conditions vConditions =
            setScript(m_eScript == Named::None ? Named::Unknown : m_eScript, true);
        if (!vConditions.empty() && vConditions.back() == Refused) {
            vConditions.back() = NotSetUp;
            forget();
        }
        return vConditions;
    }

    /// A computer of its own, which takes the place of the one before if it can be read.
    Conditions replaceByRead() {
        ComputerState read = *this;
        read.forget();
        const Conditions vConditions = read.read();
        if (vConditions.empty()) {
            *this = read;
        }
        return vConditions;
    }

    void forget() {
        static_cast<ComputerFields&>(*this) = ComputerFields();
        m_bFeature = false;
        m_bSetUp = m_bBound = false;
        m_eUses = Uses::Nothing;
        m_Own = EvaluatorState();
    }

    // --- the evaluator of the host ---

    Conditions configure() {
        m_Hosts.m_bDictionnary = m_Hosts.m_bFindsScripts = true;
        m_Hosts.m_bScript = m_Hosts.m_bInput = false;
        return {};
    }

    Conditions link() {
        if (m_Hosts.m_bLinked) {
            return {"!m_bLinked && \"expressions are already linked --> \" \"skipping linking\""};
        }
        if (!m_Hosts.m_bDictionnary) {
            return refusedWith(notConfigured("link"));
        }
        m_Hosts.m_bLinked = true;
        return {};
    }

    Conditions reconfigure() const {
        if (!m_Hosts.m_bDictionnary) {
            return refusedWith("!m_pDictionnary.isNull() && \"please call configure prior to \" "
                               "\"reconfigureExpressions()\"");
        }
        // It ends at the first placeholder.
        return m_Hosts.m_bScript && !m_Hosts.m_bLinked
                   ? refusedWith("false && \"can't configure UnknownFunction\"")
                   : Conditions();
    }

    Uses m_eUses = Uses::Nothing;
    EvaluatorState m_Own;
    EvaluatorState m_Hosts;
    bool m_bSetUp = false;
    bool m_bBound = false;
    bool m_bSaved = false;
    ComputerFields m_Saved;
};

} // namespace Velmora::Testing::CallOrder
