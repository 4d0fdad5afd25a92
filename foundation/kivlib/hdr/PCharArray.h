#pragma once

#include <vector>

/// A list of texts that outlive it: file extensions, names.
class PCharArray {
public:
    void add(const char* text) { texts.push_back(text); }

    int size() const { return static_cast<int>(texts.size()); }
    const char* inq_element(int i) const { return texts[static_cast<std::size_t>(i)]; }

private:
    std::vector<const char*> texts; // not owned
};
