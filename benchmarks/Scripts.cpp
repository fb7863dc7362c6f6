#include "Scripts.h"

namespace Velmora::Benchmarks {

namespace {

const std::string INPUT = "inputvar v0\n";

std::string nameOf(std::size_t in_uiIndex) {
    return "v" + std::to_string(in_uiIndex);
}

std::string define(std::size_t in_uiIndex, const std::string& in_strLast) {
    if (in_uiIndex == 1) {
        return "v1 = v0 * -1\n";
    }
    return nameOf(in_uiIndex) + " = " + nameOf(in_uiIndex - 1) + " + " + nameOf(in_uiIndex - 2) +
           in_strLast + "\n";
}

std::string defineAll(std::size_t in_uiDefinitions, const std::string& in_strLast) {
    std::string strScript;
    for (std::size_t i = 1; i <= in_uiDefinitions; ++i) {
        strScript += define(i, in_strLast);
    }
    return strScript;
}

const std::string TWICE = " * 2";

} // namespace

std::string makeChain(std::size_t in_uiDefinitions, Order in_eOrder) {
    if (in_eOrder == Order::Forward) {
        return INPUT + defineAll(in_uiDefinitions, TWICE);
    }
    std::string strScript;
    for (std::size_t i = in_uiDefinitions; i != 0; --i) {
        strScript += define(i, TWICE);
    }
    return strScript + INPUT;
}

double getSignOfChain(std::size_t in_uiDefinitions) {
    return in_uiDefinitions % 2 == 0 ? 1.0 : -1.0;
}

std::string makeThinChain(std::size_t in_uiDefinitions) {
    return INPUT + defineAll(in_uiDefinitions, "");
}

std::string makeDoubling(std::size_t in_uiDefinitions) {
    std::string strScript = INPUT;
    for (std::size_t i = 1; i <= in_uiDefinitions; ++i) {
        strScript += nameOf(i) + " = " + nameOf(i - 1) + " + " + nameOf(i - 1) + "\n";
    }
    return strScript;
}

std::string makeLuaChain(std::size_t in_uiDefinitions) {
    return defineAll(in_uiDefinitions, TWICE);
}

} // namespace Velmora::Benchmarks
