// Time and memory of a run, stage by stage.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Where a system tells how much memory a program uses.
class MemoryMeter {
  public:
    MemoryMeter() = default;
    virtual ~MemoryMeter() = default;
    MemoryMeter(const MemoryMeter&) = delete;
    MemoryMeter& operator=(const MemoryMeter&) = delete;

    // A stage begins: its peak is that from now on.
    virtual void forgetPeak() = 0;
    virtual double peakMegabytes() = 0;  // of resident memory
};

class Stats {
  public:
    // Without a meter there are times alone. The meter outlives the statistics.
    explicit Stats(MemoryMeter* meter = nullptr) : m_meter(meter) {}

    // Runs `body` as the stage `name` and hands on its result.
    template <typename Body>
    auto measure(std::string name, Body&& body) {
        const Stage stage(*this, std::move(name));
        return std::forward<Body>(body)();
    }

    // A line a stage: milliseconds, then the peak of resident memory while it ran in megabytes.
    std::string text() const;
    std::string json() const;

  private:
    struct Entry {
        std::string stage;
        double milliseconds;
        std::optional<double> peakMegabytes;
    };
    class Stage {
      public:
        Stage(Stats& stats, std::string name);
        ~Stage();
        Stage(const Stage&) = delete;
        Stage& operator=(const Stage&) = delete;

      private:
        Stats& m_stats;
        std::string m_name;
        std::chrono::steady_clock::time_point m_start;
    };

    Entry total() const;

    MemoryMeter* m_meter;
    std::vector<Entry> m_entries;
};
