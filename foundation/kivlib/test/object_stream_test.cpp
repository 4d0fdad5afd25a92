#include "kivlib/hdr/Dictionary.h"
#include "kivlib/hdr/GeneralIStream.h"
#include "kivlib/hdr/KIVColour.h"
#include "kivlib/hdr/KIVDLLUsageList.h"
#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/Vector.h"
#include "tests/support/Captured.h"
#include "tests/support/OldRecord.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace {

/// One that owns a neighbour, refers to another and is of a class older than its base.
class Ring : public KIVLinkedList {
    KIV_STORED(Ring, KIVLinkedList);

public:
    Ring() = default;
    explicit Ring(KIVIStream& stream);
    void storer(KIVOStream& stream) override;

    std::unique_ptr<Ring> inner;
    Ring* other = nullptr; // not owned
    int late = 0;
};

template <class Class> void record_of(Class& ring, auto& r)
{
    r.owned(ring.inner);
    r.far_link(ring.other);
    r.value(ring.late, since(70), 7);
}

Ring::Ring(KIVIStream& stream) : KIVLinkedList(stream)
{
    RecordReader r(stream);
    record_of(*this, r);
}

void Ring::storer(KIVOStream& stream)
{
    KIVLinkedList::storer(stream);
    RecordWriter r(stream);
    record_of(*this, r);
}

KIV_STORED_CLASS(Ring, 70);

/// Takes over the values of two objects, which then go.
class Pair : public KIVObject {
    KIV_STORED(Pair, KIVObject);

public:
    explicit Pair(KIVIStream& stream) : KIVObject(stream)
    {
        RecordReader r(stream);
        r.headed(first);
        r.headed(second);
    }

    KIVString first, second;
};

KIV_STORED_CLASS(Pair, -1);

class YoungerBase : public KIVObject {
    KIV_STORED(YoungerBase, KIVObject);

public:
    YoungerBase() = default;
    explicit YoungerBase(KIVIStream& stream) : KIVObject(stream) {}
};
KIV_STORED_CLASS(YoungerBase, 118);

class Room;

/// One that knows its owner, and another of its kind.
class Lamp : public KIVObject {
    KIV_STORED(Lamp, KIVObject);

public:
    explicit Lamp(Room* room) : room(room) {}
    explicit Lamp(KIVIStream& stream);
    void storer(KIVOStream& stream) override;

    Room* room;           // not owned
    Lamp* seen = nullptr; // not owned

private:
    template <class Record> void record(Record& r);
};

class Room : public KIVObject {
    KIV_STORED(Room, KIVObject);

public:
    Room() = default;
    explicit Room(KIVIStream& stream);
    void storer(KIVOStream& stream) override;
    void furnish()
    {
        lamp = std::make_unique<Lamp>(this);
        spare_lamp = std::make_unique<Lamp>(this);
    }

    std::unique_ptr<Lamp> lamp, spare_lamp;

private:
    template <class Record> void record(Record& r);
};

template <class Record> void Lamp::record(Record& r)
{
    r.back_link(room);
    r.far_link(seen);
}

template <class Record> void Room::record(Record& r)
{
    r.owned(lamp);
    r.owned(spare_lamp);
}

KIV_STORED_CLASS(Lamp, -1);
KIV_STORED_CLASS(Room, -1);
KIV_STORED_RECORD(Lamp);
KIV_STORED_RECORD(Room);

/// A class whose record is made by hand.
class Plain : public YoungerBase {
public:
    static ClassDescriptor* registered()
    {
        static auto* descriptor =
            new ClassDescriptor("Plain", "YoungerBase", read, 3, ClassManager::inq_main());
        return descriptor;
    }
    explicit Plain(KIVIStream& stream) : YoungerBase(stream) {}

private:
    static KIVObject* read(KIVIStream& stream) { return new Plain(stream); }
};

std::string container_of(const KIVObject& object)
{
    CharOStream out;
    out.insert_with_class_hdr(&object);
    return out.inq_container();
}

int read_error(const std::string& container)
{
    CharIStream in(container);
    const std::unique_ptr<Ring> ring(Ring::read_from(in));
    EXPECT_EQ(ring == nullptr, in.inq_error_state() != KIVStream::OKAY);
    return in.inq_error_state();
}

} // namespace

TEST(ObjectStream, names_all_unknown_classes_before_it_reads)
{
    OldRecord old("Ring", 70);
    old << 2;
    old.nested("NoSuchNode", 3, [](auto&) {}).nested("NoSuchKey", 3, [](auto&) {});
    CharIStream in(old.finish());
    EXPECT_EQ(Ring::read_from(in), nullptr);
    EXPECT_EQ(in.inq_error_state(), KIVStream::UNKNOWN_CLASS);
    EXPECT_EQ(in.inq_error_detail(), "NoSuchNode of version 3, NoSuchKey of version 3");
}

TEST(ObjectStream, names_classes_that_a_newer_release_wrote)
{
    const TempFolder folder;
    const Captured captured;
    OldRecord newer("Ring", 71);
    newer << 1;
    newer.nested("NoSuchKey", 3, [](auto&) {}).nested("KIVColour", 1, [](auto&) {});
    folder.write("shot", newer.finish());
    GeneralIStream in(folder.path("shot").c_str());
    EXPECT_EQ(Ring::read_from(in), nullptr);
    EXPECT_EQ(in.inq_error_state(), KIVStream::NEWER_CLASS);
    EXPECT_TRUE(in.alert_user_if_error());
    EXPECT_EQ(captured.inq_alerts(),
              std::vector<std::string>{"The file needs newer classes than are installed: "
                                       "Ring of version 71, NoSuchKey of version 3.\n" +
                                       folder.path("shot").str()});
}

TEST(ObjectStream, reads_a_class_that_is_known_by_the_names_of_its_record)
{
    const std::string container = OldRecord("Plain", 3).finish();
    const ClassDescriptor* plain = Plain::registered();
    for (const char* expected : {"Plain", "YoungerBase", "KIVObject"}) {
        CharIStream in(container);
        const std::unique_ptr<KIVObject> back(
            in.read_object(ClassManager::inq_main()->find_cd_for(expected)));
        EXPECT_TRUE(back) << expected;
    }
    CharIStream in(container);
    EXPECT_EQ(in.read_object(KIVColour::inq_class_descriptor_s()), nullptr);
    EXPECT_EQ(in.inq_error_state(), KIVStream::WRONG_CLASS);
    EXPECT_FALSE(plain->is_subclass_of(""));
    EXPECT_FALSE(KIVColour().is_kind_of("Plain"));
}

TEST(ObjectStream, refuses_a_second_owner)
{
    OldRecord old("Ring", 70);
    old << 0;
    old.nested("Ring", 70, [](OldRecord& r) {
        r << 0;
        r.put_seen(1); // owns itself
        r.insert_with_class_hdr(nullptr);
        r << 0;
    });
    old.insert_with_class_hdr(nullptr);
    old << 0;
    EXPECT_EQ(read_error(old.finish()), KIVStream::OWNED_TWICE);
}

TEST(ObjectStream, refuses_a_reference_to_an_object_that_is_gone)
{
    KIVString first("first");
    KIVString second("second");
    OldRecord good("Pair", 1);
    good.insert_with_class_hdr(&first);
    good.insert_with_class_hdr(&second);
    EXPECT_EQ(good.read<Pair>()->second, "second");

    OldRecord bad("Pair", 1);
    bad.insert_with_class_hdr(&first);
    bad.insert_with_class_hdr(&first);
    EXPECT_EQ(bad.read<Pair>(), nullptr);
}

TEST(ObjectStream, bounds_counts_by_the_record)
{
    OldRecord old("Ring", 70);
    old << 2000000000;
    EXPECT_EQ(read_error(old.finish()), KIVStream::BAD_COUNT);
}

TEST(ObjectStream, keeps_numbers_finite_on_both_sides)
{
    CharOStream out;
    out << std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(out.inq_error_state(), KIVStream::BAD_NUMBER);
    CharIStream in(out.inq_container());
    double value = 1.0;
    in >> value;
    EXPECT_EQ(in.inq_error_state(), KIVStream::BAD_NUMBER);
    EXPECT_EQ(value, 0.0);
}

TEST(ObjectStream, shortens_the_length_of_small_records_and_keeps_that_of_others_whole)
{
    // The second text guesses its length by the first, which is short, and so on.
    const std::size_t lengths[] = {10, 251, 252, 10, 65'531, 65'532, 10, 0};
    CharOStream out;
    for (const std::size_t length : lengths) {
        KIVLinkedList list; // so that records stand behind what has to move
        KIVString text(std::string(length, 'x')), end("end");
        list.add(&text);
        list.add(&end);
        out.insert_with_class_hdr(&list);
    }
    CharIStream in(out.inq_container());
    for (const std::size_t length : lengths) {
        const std::unique_ptr<KIVLinkedList> list(KIVLinkedList::read_from(in));
        ASSERT_TRUE(list);
        ASSERT_EQ(list->count(), 2);
        EXPECT_EQ(static_cast<KIVString*>(list->at_index(0))->str(), std::string(length, 'x'));
        EXPECT_EQ(*static_cast<KIVString*>(list->at_index(1)), "end");
        list->remove_all_deleting_objects();
    }
    EXPECT_EQ(in.num_chars_in_buffer(), 0);
}

TEST(ObjectStream, asks_for_a_newer_reader_only_where_lengths_are_short)
{
    const std::string one = container_of(KIVColour());
    EXPECT_EQ(one[8], 1);
    KIVLinkedList list;
    KIVColour first, second;
    list.add(&first);
    list.add(&second);
    EXPECT_EQ(container_of(list)[8], 2);
}

TEST(ObjectStream, gives_objects_that_may_go_in_any_order)
{
    constexpr int MANY = 60'000; // more than fit into one block
    KIVLinkedList list(true);
    for (int i = 0; i < MANY; ++i)
        list.add(new KIVColour(i, 0.0, 0.0, 1.0));
    std::unique_ptr<KIVLinkedList> copy;
    {
        CharIStream in(container_of(list));
        copy.reset(KIVLinkedList::read_from(in));
    }
    ASSERT_TRUE(copy);
    std::vector<std::unique_ptr<KIVColour>> colours;
    for (KIVColour* colour : copy->of<KIVColour>())
        colours.emplace_back(colour);
    for (int i = 0; i < MANY; i += 2)
        colours[static_cast<std::size_t>(i)].reset();
    for (int i = 1; i < MANY; i += 2)
        ASSERT_EQ(colours[static_cast<std::size_t>(i)]->inq_red(), i);
    colours.clear();

    CharIStream again(container_of(list)); // into the places that have come free
    copy.reset(KIVLinkedList::read_from(again));
    ASSERT_TRUE(copy);
    EXPECT_EQ(static_cast<KIVColour*>(copy->at_index(MANY - 1))->inq_red(), MANY - 1);
    copy->remove_all_deleting_objects();
}

TEST(ObjectStream, tells_what_is_no_file_of_objects_and_what_is_newer)
{
    const std::string whole = container_of(Ring());
    EXPECT_EQ(read_error(whole + "x"), KIVStream::BAD_CHECKSUM);
    EXPECT_EQ(read_error("a text"), KIVStream::FOREIGN_FILE);
    std::string newer = whole;
    newer[8] = 3;
    EXPECT_EQ(read_error(newer), KIVStream::NEWER_CONTAINER);
}

TEST(ObjectStream, carries_links_of_any_length_and_refuses_owners_that_nest_too_deeply)
{
    constexpr int COUNT = 100000;
    Ring first;
    std::vector<std::unique_ptr<Ring>> chain;
    for (int i = 0; i < COUNT; ++i) {
        chain.push_back(std::make_unique<Ring>());
        (i ? *chain[static_cast<std::size_t>(i) - 1] : first).other = chain.back().get();
    }
    const std::string container = container_of(first);
    CharIStream in(container);
    std::vector<std::unique_ptr<Ring>> back;
    for (Ring* ring = Ring::read_from(in); ring; ring = ring->other)
        back.emplace_back(ring);
    EXPECT_EQ(back.size(), COUNT + 1U);

    Ring owner;
    Ring* last = &owner;
    for (int i = 0; i < COUNT; ++i)
        last = (last->inner = std::make_unique<Ring>()).get();
    CharOStream out;
    out.insert_with_class_hdr(&owner);
    EXPECT_EQ(out.inq_error_state(), KIVStream::TOO_DEEP);
    while (owner.inner) // from the outside inwards: the destructors would nest as well
        owner.inner = std::move(owner.inner->inner);
}

TEST(ObjectStream, lets_an_owner_be_met_first_through_what_it_owns)
{
    Room first, second;
    first.furnish();
    second.furnish();
    first.lamp->seen = second.lamp.get(); // written inside the first room's lamp
    second.lamp->seen = second.spare_lamp.get();
    CharOStream out;
    out.insert_with_class_hdr(&first);
    out.insert_with_class_hdr(&second);
    CharIStream in(out.inq_container());
    std::unique_ptr<Room> one, two;
    RecordReader reader(in);
    reader.owned(one);
    reader.owned(two);
    ASSERT_EQ(in.inq_error_state(), KIVStream::OKAY);
    EXPECT_EQ(one->lamp->seen, two->lamp.get());
    EXPECT_EQ(two->lamp->room, two.get());
    EXPECT_EQ(two->lamp->seen, two->spare_lamp.get());
    EXPECT_EQ(two->spare_lamp->room, two.get());
}

TEST(ObjectStream, keeps_a_dictionary_by_object)
{
    KIVString keys[] = {"one", "two"};
    KIVColour values[] = {KIVColour(0.25), KIVColour(0.5)};
    Dictionary dictionary(4);
    for (int i : {0, 1})
        dictionary.add(keys[i], values[i]);
    const auto back = stored_and_read(dictionary);
    KIVObject* found = nullptr;
    ASSERT_TRUE(back->lookup_assoc(&keys[1], &found));
    EXPECT_TRUE(*static_cast<KIVColour*>(found) == values[1]);

    const Room announced; // a key that is not there yet has no hash
    OldRecord bad("Dictionary", 1);
    bad << 1;
    bad.insert_back_link(&announced);
    bad.insert_with_class_hdr(&keys[0]);
    EXPECT_EQ(bad.read<Dictionary>(), nullptr);
}
