#include "kivlib/hdr/KIVIStream.h"

#include "kivlib/src/LoadTable.h"

KIVIStream::KIVIStream() : table(std::make_unique<LoadTable>()) {}

KIVIStream::~KIVIStream()
{
    if (inq_error_state() != OKAY)
        table->set_delete_unowned();
}

KIVIStream& KIVIStream::operator>>(unsigned long& value)
{
    long number = 0;
    *this >> number;
    value = static_cast<unsigned long>(number);
    return *this;
}

KIVIStream& KIVIStream::operator>>(unsigned int& value)
{
    int number = 0;
    *this >> number;
    value = static_cast<unsigned int>(number);
    return *this;
}

bool KIVIStream::claim(const KIVObject* object)
{
    LoadTable::Entry* entry = table->find(object);
    if (!entry) {
        set_error_state(BAD_HEADER);
        return false;
    }
    if (entry->is_owned || entry->is_open) {
        set_error_state(OWNED_TWICE);
        return false;
    }
    table->set_owned(*entry);
    return true;
}

std::vector<std::unique_ptr<KIVObject>> KIVIStream::claim_rest()
{
    return inq_error_state() == OKAY ? table->claim_rest()
                                     : std::vector<std::unique_ptr<KIVObject>>();
}

void KIVIStream::forget(const KIVObject* object)
{
    if (LoadTable::Entry* entry = table->find(object))
        entry->object = nullptr;
}

int KIVIStream::read_count(std::size_t least)
{
    int count = 0;
    *this >> count;
    if (count >= 0 &&
        static_cast<std::size_t>(count) <= static_cast<std::size_t>(num_chars_in_buffer()) / least)
        return count;
    set_error_state(BAD_COUNT);
    return 0;
}

void KIVIStream::forget_storage(const void* memory)
{
    table->forget_storage(memory);
}

void* KIVIStream::storage_for_object(std::size_t size)
{
    return table->storage(size);
}
