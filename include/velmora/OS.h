#pragma once

#include <velmora/Export.h>

#include <string>

namespace Velmora {

/// Operations on paths, as texts; nothing here looks at the disk.
///
/// The separator is '/'. An operation that returns false leaves its output alone; each does so for
/// a null path.
class VELMORA_EXPORT OS {
public:
    OS() = delete;

    /// The directory part without a slash at the end: "a" for "a/b", "/" for "/x", "." for a path
    /// without a directory.
    static bool stripFileName(const char* in_szPath, std::string& out_strDirectory);

    /// The file name without its directory and its last extension: "script" for "dir/script.xpr". A
    /// name that starts with its only point keeps it. False for an empty path and for one that ends
    /// in "/".
    static bool stripPathAndExtension(const char* in_szPath, std::string& out_strStem);

    /// Whether the path doesn't start at the root.
    static bool isPathRelative(const char* in_szPath);
    static bool isPathRelative(const std::string& in_strPath);
};

} // namespace Velmora
