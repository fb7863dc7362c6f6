// Goes into the tests of the mutated copy: writes for each test how long it took and which mutants
// it passed, into the file that VELMORA_MUTANTS_REACHED names. What is passed outside of any test
// stands in lines of a test "*". Tests that start this program again add lines of their own.

#include <cstdlib>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "support/src/Mutation.h"

namespace {

class Listener : public testing::EmptyTestEventListener {
public:
    explicit Listener(const char* in_szFile) : m_File(in_szFile, std::ios::app) {}

    void OnTestStart(const testing::TestInfo&) override { write("*", 0); }

    void OnTestEnd(const testing::TestInfo& in_Test) override {
        write(std::string(in_Test.test_suite_name()) + '.' + in_Test.name(),
              in_Test.result()->elapsed_time());
    }

private:
    void write(const std::string& in_strTest, testing::TimeInMillis in_Elapsed) {
        m_File << in_strTest << ' ' << in_Elapsed;
        for (int iMutant = 0; iMutant != Mutation::MaxMutants; ++iMutant) {
            if (Mutation::takeReached(iMutant)) {
                m_File << ' ' << iMutant;
            }
        }
        m_File << std::endl;
    }

    std::ofstream m_File;
};

const bool s_bListening = [] {
    const char* const szFile = std::getenv("VELMORA_MUTANTS_REACHED");
    if (szFile != nullptr) {
        testing::UnitTest::GetInstance()->listeners().Append(new Listener(szFile));
    }
    return szFile != nullptr;
}();

} // namespace
