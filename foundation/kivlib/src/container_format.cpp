#include "kivlib/src/container_format.h"

#include <xxhash.h>

namespace container {

ChecksumOf::ChecksumOf() : state(XXH3_createState())
{
    XXH3_64bits_reset(state);
}

ChecksumOf::~ChecksumOf()
{
    XXH3_freeState(state);
}

void ChecksumOf::add(const void* bytes, std::size_t size)
{
    XXH3_64bits_update(state, bytes, size);
}

Checksum ChecksumOf::get() const
{
    return XXH3_64bits_digest(state);
}

} // namespace container
