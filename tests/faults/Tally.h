#pragma once

#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <map>
#include <string>

/// Whether every case is asked for, and not only those of every day.
inline bool all_faults()
{
    return std::getenv("MONTARAY_LONG") != nullptr;
}

/// Counts what became of a scene under faults, and says so at the end of the test: none may be
/// lost, and there must have been some fault.
class Tally {
public:
    explicit Tally(std::string title) : title(std::move(title)) {}
    Tally(const Tally&) = delete;
    Tally& operator=(const Tally&) = delete;
    ~Tally()
    {
        std::cout << title << ": " << injected << " injected, " << injected - lost << " survived, "
                  << lost << " lost";
        for (const auto& [kind, count] : kinds)
            std::cout << "; " << kind << " " << count;
        std::cout << "\n";
        EXPECT_GT(injected, 0) << title;
        EXPECT_EQ(lost, 0) << title;
    }

    /// `words` say what was wrong, and are empty if nothing was.
    void add(const std::string& kind, const std::string& fault, const std::string& words)
    {
        ++injected;
        ++kinds[kind];
        if (words.empty())
            return;
        if (lost++ < MOST_TOLD)
            ADD_FAILURE() << title << ", " << fault << ": " << words;
    }

private:
    static constexpr int MOST_TOLD = 20;

    std::string title;
    std::map<std::string, int> kinds;
    int injected = 0;
    int lost = 0;
};
