#include "kivlib/src/StoreTable.h"

#include "kivlib/src/LoadTable.h"

namespace {
std::vector<std::uint32_t> open_epochs;

bool is_open(std::uint32_t epoch)
{
    return std::ranges::find(open_epochs, epoch) != open_epochs.end();
}
} // namespace

StoreTable::StoreTable() : epoch(LoadTable::next_epoch())
{
    open_epochs.push_back(epoch);
}

StoreTable::~StoreTable()
{
    std::erase(open_epochs, epoch);
}

std::uint32_t StoreTable::find_elsewhere(const KIVObject* object) const
{
    if (marked_by_others.empty())
        return NONE;
    const auto found = marked_by_others.find(object);
    return found == marked_by_others.end() ? NONE : found->second;
}

bool StoreTable::is_marked_by_other(const KIVObject* object) const
{
    return object->stream_epoch != 0 && object->stream_epoch != epoch &&
           is_open(object->stream_epoch);
}
