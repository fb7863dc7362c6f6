#include "FileEnding.h"

#include <algorithm>
#include <cctype>

namespace Vxpr {

bool hasEnding(const std::string& in_strPath, std::string_view in_strEnding) {
    return in_strPath.size() >= in_strEnding.size() &&
           std::equal(in_strEnding.rbegin(), in_strEnding.rend(), in_strPath.rbegin(),
                      [](char in_cEnding, char in_cPath) {
                          return std::tolower(static_cast<unsigned char>(in_cPath)) == in_cEnding;
                      });
}

} // namespace Vxpr
