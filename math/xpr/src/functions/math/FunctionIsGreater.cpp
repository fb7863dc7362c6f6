#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.FunctionIsGreater");

class FunctionIsGreater : public FunctionAdaptor {
public:
    bool reset() override { return true; }

    const char* getFunctionName() const override { return "isGreater"; }

    void getArgumentNames(std::vector<std::string>& out) override {
        out.push_back("x");
        out.push_back("y");
    }

    void getParameterNames(std::vector<std::string>&) override {}

    bool configure(const ROConfiguration&, const TSHandle<VirtualFileSystem>&) override {
        return true;
    }

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        const auto iteX = in_ArgNameToDomain.find("x");
        const auto iteY = in_ArgNameToDomain.find("y");
        if (iteX == in_ArgNameToDomain.end() || iteY == in_ArgNameToDomain.end()) {
            return false;
        }
        const DoubleVector& vInput1 = *iteX->second;
        const DoubleVector& vInput2 = *iteY->second;
        if (vInput1.size() != 1) {
            VELMORA_ASSERT_FAIL_L(fileLogger(), "in_vInput1.size() == 1");
            return false;
        }
        if (vInput2.size() != 1) {
            VELMORA_ASSERT_FAIL_L(fileLogger(), "in_vInput2.size() == 1");
            return false;
        }
        // Equal values count as greater: scripts rely on it.
        out.push_back(vInput1[0] >= vInput2[0] ? 1.0 : 0.0);
        return true;
    }
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionIsGreater>::registerIn(
    Registry::getInstance(), "1 if x is greater than or equal to y, otherwise 0, one value");

} // namespace Velmora::Math::Xpr
