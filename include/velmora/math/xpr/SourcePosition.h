#pragma once

#include <velmora/Export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace Velmora::Math::Xpr {

/// A place in a script: the file's name, which many places share, and line and column, which count
/// from 1. Without a file it is no place.
class VELMORA_EXPORT SourcePosition {
public:
    /// No place.
    SourcePosition() = default;

    /// A line and a column of that file.
    SourcePosition(std::shared_ptr<const std::string> in_pFile, std::size_t in_uiLine,
                   std::size_t in_uiColumn);

    /// Is it a place?
    bool isSet() const { return m_pFile != nullptr; }

    /// The form in which a position is written wherever one is; empty for no place.
    std::string getText() const;

    /// Writes a position in that form in place of the text.
    static void write(const char* in_szFile, std::size_t in_uiLine, std::size_t in_uiColumn,
                      std::string& out_strText);

private:
    std::shared_ptr<const std::string> m_pFile;
    std::uint32_t m_uiLine = 0;
    std::uint32_t m_uiColumn = 0;
};

} // namespace Velmora::Math::Xpr
