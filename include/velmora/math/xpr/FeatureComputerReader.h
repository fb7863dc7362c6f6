#pragma once

#include <cstddef>
#include <istream>
#include <memory>

#include <velmora/Export.h>
#include <velmora/math/FeatureComputer.h>

namespace Velmora::Math::Xpr {

/// Reads feature computers from archives that may be damaged, or made to do harm.
///
/// The archive library trusts what an archive says of itself: the numbers of classes and the
/// lengths of texts. It abandons an object when reading fails, and ends the process when an archive
/// of XML has no closing tag. Here every such archive ends in an exception, and nothing is left
/// behind.
class VELMORA_EXPORT FeatureComputerReader {
public:
    /// The longest text that an archive may hold, such as the name of a script.
    static constexpr std::size_t MaxText = 65536;

    /// The computer whose pointer to `Velmora::Math::FeatureComputer` was written to a text or XML
    /// archive, under that name. An archive that starts with "<" is read as XML. A computer of the
    /// host's own class must not hold pointers. Null if a null pointer was written, and, with an
    /// assertion, without a name or without a buffer in the stream.
    ///
    /// Throws `ExceptionWithMsg` when the script can't be set up, with the cause in the log, and
    /// `boost::archive::archive_exception` for an archive that can't be read.
    static std::unique_ptr<Math::FeatureComputer> read(std::istream& inout_Stream,
                                                       const char* in_szName);
};

} // namespace Velmora::Math::Xpr
