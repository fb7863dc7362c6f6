#include "RunCommand.h"

#include "EngineLog.h"
#include "Failure.h"
#include "FileEnding.h"
#include "LogOption.h"
#include "RawFormat.h"
#include "Run.h"

namespace Vxpr {

namespace {

constexpr const char* DESCRIPTION =
    R"(Evaluates a script over a recording, frame by frame, and writes a table of the features' values.)";

constexpr const char* REFERENCE = R"(
FEATURES
  A feature is a definition of the script that has a value of its own: a variable, or a function
  without arguments and parameters. Its name is given as it stands in the script: level, or
  SCRIPT.level. An input can be asked for too, to see what it is fed. Without FEATURE, everything
  but the inputs is evaluated, in the order of the script.

INPUTS
  The script declares its inputs by `inputvar NAME`. Two names are fed by the recording:
    frame     the samples of the frame, from -1 to 1
    spectrum  the power spectrum of the frame under a Hann window: N/2 + 1 values for a frame of N
              samples, from 0 Hz to half the sample rate. A sinusoid of amplitude A shows as A*A/2.
  Any other needs --input NAME=FILE, a table with a row for each frame: CSV (numbers divided by
  commas, semicolons, tabs or blanks; a first row without numbers is a header, and then the columns
  called NAME or NAME[0], NAME[1]... are taken by their numbers, otherwise all but `time`), or a
  NumPy array file (.npy). A CSV table that was written by vxpr can be read back, unlike its tables
  of other formats.
  Inputs of one name in several scripts get one value. Without -i, the tables of all inputs make up
  the frames.

FRAMES
  A frame or hop is a time (20ms, 0.02s), rounded to whole samples, or a number of samples (160).
  What the last whole frame leaves over is dropped, unless --pad fills it up with silence.
  Frames count from 0.

RECORDINGS
  What libsndfile reads: WAV of every sample format, FLAC, Ogg and others. From a pipe (-i -) comes
  a WAV file, or with --raw samples without a header, as ENCODING,RATE,CHANNELS; each row is written
  as soon as its frame has come. Ctrl-C ends such a recording: what has come is written, also to
  -o FILE, and vxpr then ends as other programs do. A second one breaks off.

TABLES
  A first column `time` holds the start of the frame in seconds; then come the features in their
  order. A feature of one element has a column of its name, one of several elements has NAME[0],
  NAME[1]... A feature called `time` is named SCRIPT.time.
    csv    Numbers read back as the same 64-bit floats; not-a-numbers are `nan`, infinities `inf`.
    jsonl  One JSON object in a line. A value of one element is a number, any other an array;
           "NaN", "Infinity" and "-Infinity" are texts, and null is a missing value.
    npy    A NumPy array of records with the fields `time` and the features, all 64-bit floats; a
           feature of several elements is a field with a shape. It needs -o FILE.
  In csv and npy a feature has as many columns as its first value has elements. A later value that
  is shorter leaves the rest empty (npy: not-a-number); one that is longer is cut, which is reported
  once as an error. Where a feature can't be evaluated, its cells are empty, which is reported once
  with the frame and the time, and the run goes on. The first rows are held back until every feature
  has had a value.
  A file given by -o appears only when it is complete; it replaces one that exists.

STATISTICS
  --stats shows, for each definition that the features read, with its line:
    evaluations  how often its value was computed
    saved        how often it was read while it was there already: because another reader had asked
                 for it on the frame, because it shares a node with another definition, or because
                 nothing that it depends on had changed
    time         its part of the time of all evaluations, without that of the definitions it reads
  A definition that a condition doesn't choose isn't evaluated. What several definitions share is
  counted with the first that is asked for. Last comes the time that a frame took, without reading
  and writing. The values are the same with and without --stats.

SCRIPT FROM THE STANDARD INPUT
  With - as SCRIPT the script is called `stdin`, and other scripts are searched in the current
  directory.

EXIT STATUS
  0  done    1  the script or the data is at fault    2  the command line is at fault

EXAMPLES
  vxpr run loudness.xpr -i prompt.wav
  vxpr run endpointer.xpr speech -i prompt.wav -o speech.csv
  arecord -f S16_LE -r 8000 -t raw | vxpr run loudness.xpr -i - --raw s16le,8000,1
)";

InputFeed::Tables readTables(const std::vector<std::string>& in_vTables) {
    InputFeed::Tables tables;
    for (const std::string& strTable : in_vTables) {
        const std::size_t uiEquals = strTable.find('=');
        if (uiEquals == std::string::npos || uiEquals == 0 || uiEquals + 1 == strTable.size()) {
            throw Failure::ofCommandLine("--input " + strTable +
                                         " can't be used: give the name of an input and a file, "
                                         "such as --input pitch=pitch.csv");
        }
        if (!tables.emplace(strTable.substr(0, uiEquals), strTable.substr(uiEquals + 1)).second) {
            throw Failure::ofCommandLine("--input " + strTable.substr(0, uiEquals) +
                                         " is given twice; keep one of its tables");
        }
    }
    return tables;
}

Run::Format readFormat(const std::string& in_strFormat, const std::string& in_strOutput) {
    if (in_strFormat == "csv") {
        return Run::Format::Csv;
    }
    if (in_strFormat == "jsonl" || (in_strFormat.empty() && (hasEnding(in_strOutput, ".jsonl") ||
                                                             hasEnding(in_strOutput, ".ndjson")))) {
        return Run::Format::JsonLines;
    }
    if (in_strFormat == "npy" || (in_strFormat.empty() && hasEnding(in_strOutput, ".npy"))) {
        return Run::Format::Npy;
    }
    return Run::Format::Csv;
}

} // namespace

RunCommand::RunCommand(CLI::App& inout_App)
    : m_pCommand(inout_App.add_subcommand("run", DESCRIPTION)) {
    m_pCommand->footer(REFERENCE);
    m_pCommand->add_option("SCRIPT", m_strScript, "The script; - is the standard input")
        ->required();
    m_pCommand->add_option("FEATURE", m_vFeatures, "What to evaluate; everything without it");
    m_pCommand
        ->add_option("-i,--recording", m_strRecording, "The recording; - is the standard input")
        ->type_name("RECORDING");
    m_pCommand
        ->add_option("--raw", m_strRaw,
                     "The recording has no header; such as s16le,8000,1. Encodings: " +
                         RawFormat::listEncodings())
        ->type_name("FORMAT");
    m_pCommand
        ->add_option("--channel", m_iChannel,
                     "The channel to take, from 1; all are mixed down without it")
        ->type_name("NUMBER")
        ->check(CLI::Range(1, 1024));
    m_pCommand->add_option("--rate", m_iRate, "Resample to this rate, in hertz")
        ->type_name("HZ")
        ->check(CLI::Range(1, 10000000));
    m_pCommand->add_option("--frame", m_strFrame, "Size of a frame; 20ms without it")
        ->type_name("SIZE");
    m_pCommand
        ->add_option("--hop", m_strHop,
                     "From the start of a frame to the next; the frame's size without it")
        ->type_name("SIZE");
    m_pCommand->add_flag("--pad", m_bPad, "Fill up the last frame with silence");
    m_pCommand->add_option("--input", m_vTables, "The table that feeds an input")
        ->type_name("NAME=FILE")
        ->allow_extra_args(false);
    m_pCommand
        ->add_option("-I,--include", m_vDirectories,
                     "Search other scripts there, behind the script's own directory")
        ->type_name("DIR")
        ->allow_extra_args(false);
    m_pCommand
        ->add_option("-o,--output", m_strOutput,
                     "Where to write; - is the standard output, which is also the default")
        ->type_name("FILE");
    m_pCommand
        ->add_option("--format", m_strFormat,
                     "csv, jsonl or npy; by the ending of -o without it, csv otherwise")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"csv", "jsonl", "npy"}));
    m_pCommand->add_flag("--no-optimize", m_bPlain, "Don't optimize the script");
    m_pCommand->add_flag("--stats", m_bStatistics,
                         "Show at the end, on the standard error, what was evaluated, and how long "
                         "it took");
    m_pCommand->add_flag("-q,--quiet", m_bQuiet, "Show no progress");
    addLogOption(*m_pCommand, m_strLog);
}

/// What would be ignored is refused: rows of tables have a step, which --hop or --frame gives, and
/// no size.
void RunCommand::checkOptionsOfARecording() const {
    std::vector<const char*> vOptions{"--raw", "--channel", "--rate", "--pad"};
    if (m_pCommand->count("--hop") != 0) {
        vOptions.push_back("--frame");
    }
    for (const char* szOption : vOptions) {
        if (m_pCommand->count(szOption) != 0) {
            throw Failure::ofCommandLine(std::string(szOption) +
                                         " is about a recording: give one with -i, or leave it "
                                         "out");
        }
    }
}

ExitStatus RunCommand::execute() const {
    EngineLog::install(m_strLog);
    Run::Options options;
    options.m_Script = {m_strScript, m_vDirectories, !m_bPlain};
    options.m_vFeatures = m_vFeatures;
    options.m_Tables = readTables(m_vTables);
    options.m_strOutput = m_strOutput;
    options.m_Format = readFormat(m_strFormat, m_strOutput);
    options.m_bQuiet = m_bQuiet;
    options.m_bStatistics = m_bStatistics;
    const FrameSize frame = FrameSize::parse("--frame", m_strFrame);
    std::optional<FrameSize> hop;
    if (!m_strHop.empty()) {
        hop = FrameSize::parse("--hop", m_strHop);
    }
    if (!m_strRecording.empty()) {
        RecordingFrames::Options& recording = options.m_Recording.emplace();
        recording.m_Recording.m_strPath = m_strRecording;
        recording.m_Recording.m_iChannel = m_iChannel;
        if (!m_strRaw.empty()) {
            recording.m_Recording.m_RawFormat = RawFormat::parse(m_strRaw);
        }
        recording.m_iSampleRate = m_iRate;
        recording.m_FrameSize = frame;
        recording.m_HopSize = hop;
        recording.m_bPad = m_bPad;
    } else if (options.m_Tables.empty()) {
        throw Failure::ofCommandLine("there is nothing to run the script over: give a recording "
                                     "with -i, or tables with --input NAME=FILE");
    } else {
        checkOptionsOfARecording();
        const FrameSize& step = hop ? *hop : frame;
        if (!step.isTime()) {
            throw Failure::ofCommandLine(std::string("without a recording there is no sample rate: "
                                                     "give ") +
                                         (hop ? "--hop" : "--frame") + " as a time, such as 20ms");
        }
        options.m_dTableHop = step.getSeconds();
    }
    return Run(options).execute();
}

} // namespace Vxpr
