#include "kivlib/hdr/KIVStringList.h"

#include "kivlib/hdr/PCharArray.h"

void KIVStringList::add_to_end(const KIVString& text, bool unique)
{
    const bool is_new = known.insert(text.str()).second;
    if (is_new || !unique)
        texts.push_back(text);
}

KIVStringSet::KIVStringSet(const PCharArray& array)
{
    for (int i = 0; i < array.size(); ++i)
        add(array.inq_element(i));
}

KIVStringSet& KIVStringSet::operator<<(const KIVStringSet& other)
{
    for (int i = 0; i < other.count(); ++i)
        add(other.at_index(i));
    return *this;
}
