#include "RawFormat.h"

#include "Failure.h"
#include "NumberText.h"

#include <sndfile.h>

#include <vector>

namespace Vxpr {

namespace {

struct Encoding {
    const char* m_szName;
    int m_iFormat;
};

constexpr Encoding ENCODINGS[] = {
    {"s8", SF_FORMAT_PCM_S8},
    {"u8", SF_FORMAT_PCM_U8},
    {"s16le", SF_FORMAT_PCM_16 | SF_ENDIAN_LITTLE},
    {"s16be", SF_FORMAT_PCM_16 | SF_ENDIAN_BIG},
    {"s24le", SF_FORMAT_PCM_24 | SF_ENDIAN_LITTLE},
    {"s24be", SF_FORMAT_PCM_24 | SF_ENDIAN_BIG},
    {"s32le", SF_FORMAT_PCM_32 | SF_ENDIAN_LITTLE},
    {"s32be", SF_FORMAT_PCM_32 | SF_ENDIAN_BIG},
    {"f32le", SF_FORMAT_FLOAT | SF_ENDIAN_LITTLE},
    {"f32be", SF_FORMAT_FLOAT | SF_ENDIAN_BIG},
    {"f64le", SF_FORMAT_DOUBLE | SF_ENDIAN_LITTLE},
    {"f64be", SF_FORMAT_DOUBLE | SF_ENDIAN_BIG},
    {"ulaw", SF_FORMAT_ULAW},
    {"alaw", SF_FORMAT_ALAW},
};

std::vector<std::string> splitAtCommas(const std::string& in_strText) {
    std::vector<std::string> vParts(1);
    for (const char c : in_strText) {
        if (c == ',') {
            vParts.emplace_back();
        } else {
            vParts.back().push_back(c);
        }
    }
    return vParts;
}

int readCount(const std::string& in_strText, std::uint64_t in_uiMaximum) {
    const auto value = readWholeNumber(in_strText);
    return value && *value <= in_uiMaximum ? static_cast<int>(*value) : 0;
}

} // namespace

RawFormat RawFormat::parse(const std::string& in_strText) {
    RawFormat format;
    const std::vector<std::string> vParts = splitAtCommas(in_strText);
    if (vParts.size() == 3) {
        for (const Encoding& encoding : ENCODINGS) {
            if (vParts[0] == encoding.m_szName) {
                format.m_iEncoding = encoding.m_iFormat;
            }
        }
        format.m_iSampleRate = readCount(vParts[1], 768000);
        format.m_iChannels = readCount(vParts[2], 1024);
    }
    if (format.m_iEncoding == 0 || format.m_iSampleRate == 0 || format.m_iChannels == 0) {
        throw Failure::ofCommandLine("--raw " + in_strText +
                                     " isn't a format: write encoding,rate,channels, such as "
                                     "s16le,8000,1, with one of the encodings " +
                                     listEncodings());
    }
    return format;
}

std::string RawFormat::listEncodings() {
    std::string strList;
    for (const Encoding& encoding : ENCODINGS) {
        strList += (strList.empty() ? "" : ", ") + std::string(encoding.m_szName);
    }
    return strList;
}

} // namespace Vxpr
