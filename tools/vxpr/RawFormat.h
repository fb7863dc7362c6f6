#pragma once

#include <string>

namespace Vxpr {

/// What a sound without a header consists of, written as `s16le,8000,1`: the encoding of a sample,
/// the sample rate in hertz and the number of channels.
struct RawFormat {
    int m_iEncoding = 0; ///< format bits as libsndfile has them
    int m_iSampleRate = 0;
    int m_iChannels = 0;

    /// Throws a Failure that tells how to write a format, if in_strText isn't one.
    static RawFormat parse(const std::string& in_strText);

    /// The names of all encodings, for the help text.
    static std::string listEncodings();
};

} // namespace Vxpr
