#include "RunTest.h"

#include <sys/stat.h>

#include <cstdlib>

namespace Vxpr {

using namespace Vxpr::TestSupport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

/// Pictures come from another program.
class GraphPictureTest : public RunTest {
protected:
    /// While it lives, programs are searched in one directory only.
    class Path {
    public:
        explicit Path(const std::string& in_strDirectory) : m_strBefore(std::getenv("PATH")) {
            setenv("PATH", in_strDirectory.c_str(), 1);
        }
        ~Path() { setenv("PATH", m_strBefore.c_str(), 1); }
        Path(const Path&) = delete;
        Path& operator=(const Path&) = delete;

    private:
        std::string m_strBefore;
    };

    /// Puts a program of that name in a directory of its own, which it returns.
    std::string writeProgram(const std::string& in_strName, const std::string& in_strScript) const {
        const std::string strDirectory = m_Scratch.getPath("bin");
        mkdir(strDirectory.c_str(), 0777);
        const std::string strPath = m_Scratch.write("bin/" + in_strName, in_strScript);
        chmod(strPath.c_str(), 0777);
        return strDirectory;
    }

    ProcessResult draw(const std::string& in_strName) const {
        return runVxpr({"graph", writeScript("inputvar frame\na = sum(frame)\n"), "-o",
                        m_Scratch.getPath(in_strName)});
    }
};

TEST_F(GraphPictureTest, TheProgramGetsTheTextAndTheFormat) {
    const Path path(writeProgram("dot", "#!/bin/sh\necho \"$@\"\nexec /bin/cat\n"));
    for (const std::string strEnding : {"svg", "png"}) {
        const ProcessResult result = draw("a." + strEnding);
        EXPECT_EQ(result.m_strErrors, "");
        EXPECT_EQ(result.m_iStatus, 0);
        EXPECT_EQ(readFile(m_Scratch.getPath("a." + strEnding)),
                  "-T" + strEnding + "\n" +
                      runVxpr({"graph", m_Scratch.getPath("s.xpr")}).m_strOutput);
    }
}

TEST_F(GraphPictureTest, WithoutTheProgramTheMessageSaysWhatToInstall) {
    mkdir(m_Scratch.getPath("empty").c_str(), 0777);
    const Path path(m_Scratch.getPath("empty"));
    const ProcessResult result = draw("a.svg");
    EXPECT_EQ(result.m_iStatus, 1);
    EXPECT_THAT(result.m_strErrors, HasSubstr("which isn't installed; install it (on Debian: "
                                              "apt-get install graphviz), or write the graph"));
    EXPECT_THAT(m_Scratch.list(), ElementsAre("empty", "s.xpr"));
    // Text needs no other program.
    EXPECT_EQ(draw("a.dot").m_iStatus, 0);
}

TEST_F(GraphPictureTest, AFailureOfTheProgramIsToldAndLeavesTheFileAsItWas) {
    m_Scratch.write("a.png", "before");
    {
        const Path path(writeProgram("dot", "#!/bin/sh\necho half\necho no font >&2\nexit 3\n"));
        const ProcessResult result = draw("a.png");
        EXPECT_EQ(result.m_iStatus, 1);
        EXPECT_THAT(result.m_strErrors, HasSubstr("`dot`, the program of Graphviz, failed with "
                                                  "status 3 (no font); name a feature"));
    }
    {
        const Path path(writeProgram("dot", "#!/bin/sh\nkill -9 $$\n"));
        EXPECT_THAT(draw("a.png").m_strErrors, HasSubstr("was ended by signal 9"));
    }
    EXPECT_EQ(readFile(m_Scratch.getPath("a.png")), "before");
    EXPECT_THAT(m_Scratch.list(), ElementsAre("a.png", "bin", "s.xpr"));
}

TEST_F(GraphPictureTest, GraphvizDrawsWhatIsWritten) {
    EXPECT_EQ(draw("a.svg").m_strErrors, "");
    const std::string strPicture = readFile(m_Scratch.getPath("a.svg"));
    EXPECT_THAT(strPicture, HasSubstr("</svg>"));
    EXPECT_THAT(strPicture, HasSubstr(">frame</text>"));
    EXPECT_EQ(draw("a.png").m_strErrors, "");
    EXPECT_THAT(readFile(m_Scratch.getPath("a.png")), StartsWith("\x89PNG"));
}

} // namespace Vxpr
