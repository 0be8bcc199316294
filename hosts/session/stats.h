// Time and memory of a run, stage by stage.
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

class Stats {
  public:
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
        double peakMegabytes;
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

    std::vector<Entry> m_entries;
};
