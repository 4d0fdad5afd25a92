#include "imagelib/src/FileContents.h"

namespace {
constexpr std::size_t MOST_KEPT = std::size_t{256} << 20;

/// The buffers of this thread that nobody has, one for each life inside of another.
struct Kept {
    std::unique_ptr<ByteBuffer> buffers[2];
    std::size_t taken = 0;

    std::unique_ptr<ByteBuffer>* inq_next() { return taken < 2 ? &buffers[taken] : nullptr; }
};
thread_local Kept our_kept;
} // namespace

FileContents::FileContents()
{
    if (our_kept.inq_next())
        buffer = std::move(*our_kept.inq_next());
    if (!buffer || buffer->has_failed())
        buffer = std::make_unique<ByteBuffer>();
    buffer->set_size(0);
    ++our_kept.taken;
}

FileContents::~FileContents()
{
    --our_kept.taken;
    if (our_kept.inq_next() && buffer->capacity() <= MOST_KEPT)
        *our_kept.inq_next() = std::move(buffer);
}
