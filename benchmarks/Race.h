#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace Velmora::Benchmarks {

/// Measure, or only run everything once?
enum class Effort { Full, Quick };

/// Sets Google Benchmark up. Once a process, ahead of all races.
void prepareRaces(Effort in_eEffort);

/// Several ways to compute a frame, measured in turns.
///
/// The repetitions of all runners are shuffled among each other, so that whatever else the machine
/// does hits all alike; what counts of each is the median of its repetitions, in processor time of
/// the thread.
class Race {
public:
    /// What the others are compared with, or one of the others?
    enum class Role { Measured, Reference };

    /// Nanoseconds a frame, in the order in which the runners were added.
    class Times {
    public:
        struct Entry {
            std::string m_strRunner;
            double m_dTime;
            Role m_eRole;
        };

        void add(const std::string& in_strRunner, double in_dTime, Role in_eRole = Role::Measured) {
            m_vEntries.push_back({in_strRunner, in_dTime, in_eRole});
        }

        /// The time of a runner that is there.
        double at(const std::string& in_strRunner) const;

        std::vector<Entry>::const_iterator begin() const { return m_vEntries.begin(); }
        std::vector<Entry>::const_iterator end() const { return m_vEntries.end(); }

    private:
        std::vector<Entry> m_vEntries;
    };

    /// A way to compute frames: `in_Frame(std::size_t in_uiFrame)` computes one. Frames are counted
    /// from 0, again in each repetition. What the function refers to outlives `run`.
    template <class FrameT>
    void add(const std::string& in_strRunner, FrameT in_Frame) {
        add(in_strRunner, Role::Measured, in_Frame);
    }

    /// The same for something that the first runner is compared with.
    template <class FrameT>
    void addReference(const std::string& in_strRunner, FrameT in_Frame) {
        add(in_strRunner, Role::Reference, in_Frame);
    }

    /// Measures all runners, and forgets them.
    Times run();

private:
    struct Runner {
        std::string m_strName;
        Role m_eRole;
    };

    template <class FrameT>
    void add(const std::string& in_strRunner, Role in_eRole, FrameT in_Frame) {
        m_vRunners.push_back({in_strRunner, in_eRole});
        benchmark::RegisterBenchmark(in_strRunner.c_str(), [in_Frame](benchmark::State& state) {
            std::size_t uiFrame = 0;
            for (auto iteration : state) {
                static_cast<void>(iteration);
                in_Frame(uiFrame++);
            }
        });
    }

    std::vector<Runner> m_vRunners;
};

} // namespace Velmora::Benchmarks
