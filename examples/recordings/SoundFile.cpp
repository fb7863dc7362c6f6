#include "SoundFile.h"

#include <sndfile.h>

#include <memory>
#include <stdexcept>

namespace Recordings {

namespace {

using File = std::unique_ptr<SNDFILE, int (*)(SNDFILE*)>;

File open(const std::string& in_strPath, int in_iMode, SF_INFO& inout_Info) {
    File file(sf_open(in_strPath.c_str(), in_iMode, &inout_Info), sf_close);
    if (!file) {
        throw std::runtime_error(in_strPath + ": " + sf_strerror(nullptr));
    }
    return file;
}

} // namespace

void writeSound(const std::string& in_strPath, const Signal& in_Signal) {
    SF_INFO info{};
    info.samplerate = Signal::SampleRate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    const File file = open(in_strPath, SFM_WRITE, info);
    const std::vector<short> samples = in_Signal.quantized();
    const auto count = static_cast<sf_count_t>(samples.size());
    if (sf_write_short(file.get(), samples.data(), count) != count) {
        throw std::runtime_error(in_strPath + ": " + sf_strerror(file.get()));
    }
}

Signal readSound(const std::string& in_strPath) {
    SF_INFO info{};
    const File file = open(in_strPath, SFM_READ, info);
    if (info.channels != 1 || info.samplerate != Signal::SampleRate) {
        throw std::runtime_error(in_strPath + ": not one channel at 8000 Hz");
    }
    std::vector<double> samples(static_cast<std::size_t>(info.frames));
    samples.resize(
        static_cast<std::size_t>(sf_read_double(file.get(), samples.data(), info.frames)));
    Signal signal;
    signal.addSamples(samples);
    return signal;
}

} // namespace Recordings
