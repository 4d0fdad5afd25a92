#include "kivlib/hdr/KIVColour.h"
#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/Record.h"
#include "tests/faults/InChild.h"
#include "tests/support/OldRecord.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {
#ifdef __SANITIZE_ADDRESS__
constexpr bool HAS_BLOCKS = false;
#else
constexpr bool HAS_BLOCKS = true;
#endif
constexpr int MANY = 10'000; // more than are made one by one

std::unique_ptr<KIVLinkedList> read_many_colours()
{
    KIVLinkedList list(true);
    for (int i = 0; i < MANY; ++i)
        list.add(new KIVColour(i, 0.0, 0.0, 1.0));
    return stored_and_read(list);
}

struct Notes {
    bool was_read = false;
    bool has_addresses_left = false;
};

void read_under_a_limit(Notes& notes)
{
    constexpr rlim_t GIB = rlim_t{1} << 30;
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t limit = pages * static_cast<rlim_t>(::getpagesize()) + 70 * GIB;
    const rlimit limits{limit, limit};
    if (::setrlimit(RLIMIT_AS, &limits) != 0)
        return;
    const auto list = read_many_colours();
    notes.was_read =
        list && static_cast<KIVColour*>(list->at_index(MANY - 1))->inq_red() == MANY - 1;
    constexpr int FLAGS = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
    notes.has_addresses_left = ::mmap(nullptr, 60 * GIB, PROT_NONE, FLAGS, -1, 0) != MAP_FAILED;
}

/// Throws in the middle of its record.
class Thrower : public KIVObject {
    KIV_STORED(Thrower, KIVObject);

public:
    Thrower() = default;
    explicit Thrower(KIVIStream& stream) : KIVObject(stream) { throw std::bad_alloc(); }
};
KIV_STORED_CLASS(Thrower, -1);
} // namespace

TEST(ObjectMemory, leaves_addresses_to_a_process_that_has_few)
{
    if (!HAS_BLOCKS)
        GTEST_SKIP() << "the sanitizer takes addresses of its own";
    const ChildEnd<Notes> end = in_child<Notes>(read_under_a_limit);
    EXPECT_TRUE(end.was_well);
    EXPECT_TRUE(end.notes.was_read);
    EXPECT_TRUE(end.notes.has_addresses_left);
}

TEST(ObjectMemory, of_a_reader_that_threw_is_forgotten)
{
    CharOStream out;
    const Thrower thrower;
    out.insert_with_class_hdr(&thrower);
    out.put_seen(0);
    CharIStream in(out.inq_container());
    EXPECT_THROW(in.read_object(nullptr), std::bad_alloc);
    EXPECT_EQ(in.read_object(nullptr), nullptr);
    EXPECT_EQ(in.inq_error_state(), KIVStream::BAD_HEADER);
}
