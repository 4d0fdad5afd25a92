#pragma once

#include "kivlib/hdr/KIVString.h"

#include <unordered_set>
#include <vector>

class PCharArray;

/// Texts in the order of their arrival, such as the files that a scene refers to.
class KIVStringList {
public:
    /// With `unique`, a text that is there already is not added again.
    void add_to_end(const KIVString& text, bool unique);

    int count() const { return static_cast<int>(texts.size()); }
    const KIVString& at_index(int i) const { return texts[static_cast<std::size_t>(i)]; }

private:
    std::vector<KIVString> texts;
    std::unordered_set<std::string> known; // the same texts, to be found
};

/// Different texts in the order of their arrival.
class KIVStringSet {
public:
    KIVStringSet() = default;
    explicit KIVStringSet(const KIVString& text) { add(text); }
    explicit KIVStringSet(const PCharArray& array);

    void add(const KIVString& text) { texts.add_to_end(text, true); }

    int count() const { return texts.count(); }
    const KIVString& at_index(int i) const { return texts.at_index(i); }

    /// Joins another set to this one.
    KIVStringSet& operator<<(const KIVStringSet& other);

private:
    KIVStringList texts;
};
