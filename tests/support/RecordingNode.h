#pragma once

#include <velmora/math/xpr/BinaryOperatorImpl.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/XaryFunction.h>

#include <functional>
#include <string>
#include <vector>

namespace Velmora::Testing {

using Math::DoubleVector;
using Math::Xpr::ExpressionBaseImpl;

/// What recording nodes did, in order, as "NAME.OPERATION".
using Calls = std::vector<std::string>;

/// A node that records the calls of its hooks and does what the test has set.
class RecordingNode : public ExpressionBaseImpl {
public:
    explicit RecordingNode(const char* in_szName = "node", Calls* inout_pCalls = nullptr)
        : m_strName(in_szName), m_pCalls(inout_pCalls) {}

    const char* getName() const override {
        ++m_uiNamesAsked;
        return m_strName.c_str();
    }

    bool reset() override {
        record("reset");
        return ExpressionBaseImpl::reset();
    }

    using ExpressionBaseImpl::addChild;
    using ExpressionBaseImpl::fill;
    using ExpressionBaseImpl::invalidate_i;
    using ExpressionBaseImpl::isParent;
    using ExpressionBaseImpl::isSealed;
    using ExpressionBaseImpl::quickInvalidate;

    /// What the hooks answer.
    bool m_bConfigures = true;
    bool m_bEvaluates = true;
    bool m_bResets = true;
    bool m_bIsDependant = false;
    bool m_bCopies = true;

    /// Evaluate the children on the way, as an operator does.
    bool m_bReadsChildren = false;

    DoubleVector m_vResult{1.0};
    const VirtualFileSystem* m_pFileSystem = nullptr;
    mutable unsigned m_uiNamesAsked = 0;

protected:
    bool configure_i(const TSHandle<VirtualFileSystem>& in_pFileSystem) override {
        record("configure_i");
        m_pFileSystem = in_pFileSystem.get();
        return m_bConfigures;
    }

    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override {
        record("evaluate_i");
        if (m_bReadsChildren) {
            for (const auto* p = getChildBegin(); p != getChildEnd(); ++p) {
                LimitedObjPtr<DoubleVector> pValue;
                (*p)->evaluate(pValue);
            }
        }
        if (m_bEvaluates) {
            out = &m_vResult;
        }
        return m_bEvaluates;
    }

    bool reset_i() override {
        record("reset_i");
        return m_bResets;
    }

    void seal_i() override { record("seal_i"); }

    void replaceChild_i(ExpressionBaseImpl& in_OldChild,
                        const Handle<ExpressionBaseImpl>& in_pNewChild) override {
        record(std::string("replaceChild_i ") + in_OldChild.getName() + " " +
               in_pNewChild->getName());
    }

    Handle<ExpressionBaseImpl>
    copy_i(Math::Xpr::ExpressionImplCopier& inout_Copier) const override {
        record("copy_i");
        if (!m_bCopies) {
            return Handle<ExpressionBaseImpl>();
        }
        Handle<RecordingNode> pCopy(new RecordingNode(m_strName.c_str(), m_pCalls));
        for (const auto* p = getChildBegin(); p != getChildEnd(); ++p) {
            pCopy->addChild((*p)->copy(inout_Copier), true);
        }
        return Handle<ExpressionBaseImpl>(pCopy);
    }

    bool isDependantOf_i(const Handle<ExpressionBaseImpl>&) const override {
        record("isDependantOf_i");
        return m_bIsDependant;
    }

private:
    void record(const std::string& in_strOperation) const {
        if (m_pCalls != nullptr) {
            m_pCalls->push_back(m_strName + "." + in_strOperation);
        }
    }

    std::string m_strName;
    Calls* m_pCalls;
};

/// A function that records its configuration and shows what its derived classes may call.
class RecordingFunction : public Math::Xpr::FunctionBaseImpl {
public:
    RecordingFunction() = default;
    explicit RecordingFunction(const char* in_szName) : FunctionBaseImpl(in_szName) {}

    using FunctionBaseImpl::addArgument;
    using FunctionBaseImpl::addChild;
    using FunctionBaseImpl::addParameter;
    using FunctionBaseImpl::fill;

    bool m_bConfigures = true;
    unsigned m_uiConfigurations = 0;

    /// "NAME=VALUE" of the parameters that the last configuration defined, of those asked for.
    std::vector<std::string> m_vKeys;
    std::vector<std::string> m_vConfiguration;
    const VirtualFileSystem* m_pFileSystem = nullptr;
    DoubleVector m_vResult{1.0};

protected:
    bool configure_i(const ROConfiguration& in_Configuration,
                     const TSHandle<VirtualFileSystem>& in_pFileSystem) override {
        ++m_uiConfigurations;
        m_pFileSystem = in_pFileSystem.get();
        m_vConfiguration.clear();
        for (const std::string& strKey : m_vKeys) {
            ParameterValue value;
            if (in_Configuration.getParameter(strKey.c_str(), value)) {
                m_vConfiguration.push_back(strKey + "=" + std::to_string(int(value)));
            }
        }
        return m_bConfigures;
    }

    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override {
        out = &m_vResult;
        return true;
    }

    bool reset_i() override { return true; }

    Handle<ExpressionBaseImpl>
    copy_i(Math::Xpr::ExpressionImplCopier& inout_Copier) const override {
        Handle<RecordingFunction> pCopy(new RecordingFunction);
        pCopy->fill(*this, inout_Copier);
        return Handle<ExpressionBaseImpl>(pCopy);
    }

    bool isDependantOf_i(const Handle<ExpressionBaseImpl>&) const override { return false; }
};

/// A binary operator that counts its calculations and gives what the test has set.
class RecordingBinary : public Math::Xpr::BinaryOperatorImpl<RecordingBinary> {
public:
    RecordingBinary() : BinaryOperatorImpl("record") {}
    explicit RecordingBinary(const char* in_szName) : BinaryOperatorImpl(in_szName) {}

    bool calculate(const DoubleVector& in_Left, const DoubleVector& in_Right,
                   DoubleVector& out) override {
        ++m_uiCalculations;
        if (m_OnCalculation) {
            m_OnCalculation();
        }
        m_pLeft = &in_Left;
        m_pRight = &in_Right;
        m_pOut = &out;
        out = in_Left;
        out.insert(out.end(), in_Right.begin(), in_Right.end());
        return m_bCalculates;
    }

    using BinaryOperatorImpl::addArgument;

    bool m_bCalculates = true;
    /// What it does on the way.
    std::function<void()> m_OnCalculation;
    unsigned m_uiCalculations = 0;
    const DoubleVector* m_pLeft = nullptr;
    const DoubleVector* m_pRight = nullptr;
    DoubleVector* m_pOut = nullptr;
};

/// An operator of any number of arguments that records its inputs and gives what the test has set.
class RecordingXary : public Math::Xpr::XaryFunction<RecordingXary> {
public:
    RecordingXary() = default;
    explicit RecordingXary(const char* in_szName) : XaryFunction(in_szName) {}

    bool calculate(std::vector<Handle<ExpressionBaseImpl>>& inout_vInputs,
                   DoubleVector& out) override {
        ++m_uiCalculations;
        m_vInputs.clear();
        for (const auto& pInput : inout_vInputs) {
            m_vInputs.push_back(pInput.get());
        }
        m_pOut = &out;
        return m_bCalculates;
    }

    using XaryFunction::addArgument;

    bool m_bCalculates = true;
    unsigned m_uiCalculations = 0;
    std::vector<const ExpressionBaseImpl*> m_vInputs;
    DoubleVector* m_pOut = nullptr;
};

} // namespace Velmora::Testing
