#pragma once

#include "kivlib/hdr/KIVObject.h"

#include <cstddef>
#include <vector>

/// Whole numbers in an order, such as the order in which inputs are combined.
class IntArray {
public:
    IntArray() = default;

    void add(int number) { numbers.push_back(number); }
    int inq_element(int i) const { return numbers[static_cast<std::size_t>(i)]; }
    int size() const { return static_cast<int>(numbers.size()); }

    bool operator==(const IntArray&) const = default;

private:
    std::vector<int> numbers;
};
