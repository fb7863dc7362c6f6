#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include <velmora/MemAccounting.h>
#include <velmora/math/Reductions.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>
#include <velmora/math/xpr/FunctionAdaptor.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/Registry.h>

namespace Velmora::Math::Xpr {

/// A built-in function as a node of the graph: holds an `F`, which derives from `FunctionAdaptor`,
/// feeds it the values of the arguments, and owns its result.
///
/// The arguments are looked up at the first evaluation and kept. From then on an evaluation costs
/// one walk over the arguments and the function's `calculate`: no allocation, no cast, no copy of a
/// vector. An argument that fails leaves the vector of the frame before in its place, which is
/// computed with; one that never had a vector fails the node.
template <class F>
class VELMORA_EXPORT UserFunctionImpl : public FunctionBaseImpl {
public:
    VELMORA_MEM_ACCOUNT_NO_SIZE("UserFunctionImpl")

    /// Gives the node the name, the arguments and the parameters that `F` tells; none of them if
    /// the node is about to be made a copy of another.
    explicit UserFunctionImpl(bool in_bForCopy = false) : FunctionBaseImpl("unamed") {
        if (in_bForCopy) {
            return;
        }
        setName(m_UserFunction.getFunctionName());
        m_UserFunction.getArgumentNames(m_vArgumentNames);
        for (const std::string& strName : m_vArgumentNames) {
            FunctionBaseImpl::addArgument(strName.c_str());
        }
        std::vector<std::string> vParameterNames;
        m_UserFunction.getParameterNames(vParameterNames);
        for (const std::string& strName : vParameterNames) {
            FunctionBaseImpl::addParameter(strName.c_str());
        }
    }

    /// Registers the function under the name that `F` tells, with one line on what it returns.
    /// False for a name that exists.
    ///
    ///     static const bool s_bRegistered =
    ///         UserFunctionImpl<FunctionRms>::registerIn(Registry::getInstance(), "...");
    static bool registerIn(Registry& inout_Registry, const char* in_szDescription) {
        const F userFunction{};
        const char* const szName = userFunction.getFunctionName();
        return inout_Registry.registerFunction(
                   szName, new Registry::ExpressionAllocatorT<UserFunctionImpl>) &&
               inout_Registry.describe(szName, in_szDescription);
    }

protected:
    using FunctionBaseImpl::configure_i;
    bool configure_i(const ROConfiguration& in_Configuration,
                     const TSHandle<VirtualFileSystem>& in_pFileSystem) override {
        return m_UserFunction.configure(in_Configuration, in_pFileSystem);
    }

    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override {
        if (!evaluateOnly() && !evaluateArguments()) {
            return false;
        }
        m_vResult.clear();
        if (!m_UserFunction.calculate(m_mapArgNameToDomain, m_vResult)) {
            return false;
        }
        out = &m_vResult;
        return true;
    }

    bool getReduction([[maybe_unused]] Reductions::Kind& out_eKind) const override {
        if constexpr (HasReductionOf<F>::value) {
            // A class of the host's that derives from this one may compute otherwise, and so may a
            // function that is configured later.
            const bool bReduces =
                typeid(*this) == typeid(UserFunctionImpl) && getParameterCount() == 0;
            if (bReduces) {
                out_eKind = F::reductionOf(m_UserFunction);
            }
            return bReduces;
        } else {
            return false;
        }
    }

    bool isBetterTogether() const override {
        // A class of the host's that derives from this one may compute otherwise.
        return HasCalculateTogether<F>::value && typeid(*this) == typeid(UserFunctionImpl);
    }

    bool evaluateTogether_i(ExpressionBaseImpl* const* in_ppNodes, std::size_t in_uiNodes,
                            LimitedObjPtr<DoubleVector>* out_pValues) override {
        if constexpr (HasCalculateTogether<F>::value) {
            static_assert(MaxTogether <= FunctionAdaptor::MaxTogether);
            LimitedObjPtr<DoubleVector> pInput;
            F* functions[MaxTogether];
            DoubleVector* results[MaxTogether];
            for (std::size_t i = 0; i < in_uiNodes; ++i) {
                auto& node = static_cast<UserFunctionImpl&>(*in_ppNodes[i]);
                LimitedObjPtr<DoubleVector> pValue;
                if (!node.readOnlyArgument(pValue) || (i != 0 && pValue != pInput) ||
                    pValue == &node.m_vResult) {
                    return false;
                }
                pInput = pValue;
                functions[i] = &node.m_UserFunction;
                results[i] = &node.m_vResult;
            }
            if (!F::calculateTogether(functions, in_uiNodes, *pInput, results)) {
                return false;
            }
            for (std::size_t i = 0; i < in_uiNodes; ++i) {
                *static_cast<UserFunctionImpl&>(*in_ppNodes[i]).m_vValues.front() = pInput;
                out_pValues[i] = results[i];
            }
            return true;
        } else {
            return FunctionBaseImpl::evaluateTogether_i(in_ppNodes, in_uiNodes, out_pValues);
        }
    }

    bool reset_i() override { return m_UserFunction.reset(); }
    void seal_i() override {}
    void replaceChild_i(ExpressionBaseImpl&, const Handle<ExpressionBaseImpl>&) override {}

    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override {
        auto* const pCopy = new UserFunctionImpl(true);
        const Handle<ExpressionBaseImpl> pResult(pCopy);
        if (pCopy != nullptr) {
            pCopy->fill(*this, inout_Copier);
            pCopy->setName(getName());
            pCopy->m_vArgumentNames = m_vArgumentNames;
            pCopy->m_UserFunction = m_UserFunction;
        }
        return pResult;
    }

    bool isDependantOf_i(const Handle<ExpressionBaseImpl>&) const override { return false; }

    /// Reads its arguments themselves, and not past them.
    bool getSealedInputs(std::vector<ExpressionBaseImpl*>& out_vInputs) const override {
        auto iteArgument = getArgumentBegin();
        for (std::size_t i = 0; i < m_vArgumentNames.size() && iteArgument != getArgumentEnd();
             ++i, ++iteArgument) {
            const Handle<VariableImpl> pArgument = i < m_vArguments.size()
                                                       ? m_vArguments[i]
                                                       : FunctionBaseImpl::getArgument(iteArgument);
            if (pArgument.isNull()) {
                return false;
            }
            out_vInputs.push_back(pArgument.get());
        }
        return true;
    }

private:
    void prepareArguments() {
        if (m_vArguments.empty()) {
            findArguments();
        }
        makeEntries();
        if (m_vValues.size() == 1 && !m_vArguments.front().isNull()) {
            m_pOnlyArgument = m_vArguments.front().get();
        }
    }

    void findArguments() {
        m_vArguments.reserve(static_cast<std::size_t>(getChildEnd() - getChildBegin()));
        for (auto ite = getArgumentBegin(); ite != getArgumentEnd(); ++ite) {
            m_vArguments.emplace_back(getChildAt(static_cast<long>((*ite).second)));
        }
    }

    /// Arguments beyond those that the function declared, which a host may have added, get none.
    void makeEntries() {
        const std::size_t uiCount = std::min(m_vArguments.size(), m_vArgumentNames.size());
        m_vValues.reserve(uiCount);
        for (std::size_t i = 0; i < uiCount; ++i) {
            m_mapArgNameToDomain[m_vArgumentNames[i]] = nullptr;
        }
        for (auto& entry : m_mapArgNameToDomain) {
            m_vValues.push_back(&entry.second);
        }
    }

    /// Has the class a static `calculateTogether` of its own, `noexcept` or not? That of a base
    /// knows nothing of the class's `calculate`.
    template <class T, class = void>
    struct HasCalculateTogether : std::false_type {};
    template <class T>
    struct HasCalculateTogether<T, std::void_t<decltype(&T::calculateTogether)>>
        : std::is_convertible<decltype(&T::calculateTogether),
                              bool (*)(T* const*, std::size_t, const DoubleVector&,
                                       DoubleVector* const*)> {};

    /// The same of `reductionOf`.
    template <class T, class = void>
    struct HasReductionOf : std::false_type {};
    template <class T>
    struct HasReductionOf<T, std::void_t<decltype(&T::reductionOf)>>
        : std::is_convertible<decltype(&T::reductionOf), Reductions::Kind (*)(const T&)> {};

    /// The only argument, if its value is current, as in most functions of a sealed graph. False
    /// for all else.
    bool evaluateOnly() {
        return m_pOnlyArgument != nullptr && readOnlyArgument(*m_vValues.front());
    }

    bool readOnlyArgument(LimitedObjPtr<DoubleVector>& out) {
        if (m_pOnlyArgument == nullptr || !m_pOnlyArgument->isValid()) {
            return false;
        }
        readValue(*m_pOnlyArgument, out);
        return !out.isNull();
    }

    /// By position on both sides: the sorted map and the arguments in their order.
    [[gnu::noinline]] bool evaluateArguments() {
        if (m_vValues.empty()) {
            prepareArguments();
        }
        bool bComplete = true;
        auto iteArgument = m_vArguments.begin();
        for (LimitedObjPtr<DoubleVector>* const pValue : m_vValues) {
            if (!iteArgument->isNull()) {
                readValue(**iteArgument, *pValue);
            }
            ++iteArgument;
            bComplete = bComplete && !pValue->isNull();
        }
        return bComplete || reportNoValue();
    }

    F m_UserFunction;
    std::vector<std::string> m_vArgumentNames;
    std::vector<Handle<VariableImpl>> m_vArguments;
    FunctionAdaptor::ArgumentMap m_mapArgNameToDomain;
    /// The pointers in the map, in its order.
    std::vector<LimitedObjPtr<DoubleVector>*> m_vValues;
    VariableImpl* m_pOnlyArgument = nullptr;
    DoubleVector m_vResult;
};

} // namespace Velmora::Math::Xpr
