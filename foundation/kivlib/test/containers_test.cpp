#include "kivlib/hdr/ChangeRecorder.h"
#include "kivlib/hdr/Dictionary.h"
#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/KIVString.h"
#include "kivlib/hdr/KIVStringList.h"
#include "kivlib/hdr/NameKeyDictionary.h"
#include "kivlib/hdr/SlotList.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace {
class LinkedList : public testing::Test {
protected:
    LinkedList()
    {
        for (KIVString* text : {&a, &b, &c})
            list.add(text);
    }

    std::string inq_order() const
    {
        std::string order;
        for (const KIVString* text : list.of<KIVString>())
            order += text->str();
        return order;
    }

    KIVString a{"a"}, b{"b"}, c{"c"}, d{"d"};
    KIVLinkedList list;
};
} // namespace

TEST_F(LinkedList, keeps_its_order_through_edits)
{
    list.add_first(&d);
    EXPECT_EQ(inq_order(), "dabc");
    list.add_after(&a, &d);
    EXPECT_EQ(inq_order(), "dadbc");
    list.add_at_index(1, &c);
    EXPECT_EQ(inq_order(), "dcadbc");
    list.add_at_index(99, &a);
    EXPECT_EQ(inq_order(), "dcadbca");
    EXPECT_EQ(list.remove(), &d);
    EXPECT_TRUE(list.remove(&c));
    EXPECT_EQ(inq_order(), "adbca");
    gsl::owner<KIVLinkOb*> link = list.remove_link(list.find(&b));
    list.add_link_first(link);
    EXPECT_EQ(inq_order(), "badca");
    EXPECT_EQ(list.find_index_of(&c), 3);
    EXPECT_EQ(list.at_index(4), &a);
    EXPECT_EQ(list.at_index(5), nullptr);
    EXPECT_EQ(list.count(), 5);
    const KIVLinkedList copy(list);
    list.remove_all();
    EXPECT_TRUE(list.inq_is_empty());
    EXPECT_EQ(copy.count(), 5);
}

TEST_F(LinkedList, is_walked_both_ways_and_while_it_shrinks)
{
    KIVIterator i(list);
    EXPECT_EQ(i++, &a);
    EXPECT_EQ(i++, &b);
    delete i.remove_this();
    EXPECT_EQ(i(), nullptr);
    EXPECT_EQ(i++, &c);
    EXPECT_EQ(i--, &a);
    EXPECT_EQ(i.remove(), &a);
    EXPECT_EQ(++i, &c);
    EXPECT_EQ(i++, nullptr);
    i.reset();
    EXPECT_EQ(i++, &c);

    const KIVLinkedList none;
    ReadOnlyIterator nothing(none);
    EXPECT_EQ(nothing++, nullptr);
}

TEST(LinkedListOwner, deletes_its_objects)
{
    struct Counted : KIVObject {
        explicit Counted(int& alive) : alive(alive) { ++alive; }
        ~Counted() override { --alive; }
        int& alive;
    };
    int alive = 0;
    {
        KIVLinkedList owner(true);
        owner.add(new Counted(alive));
        owner.add(new Counted(alive));
        EXPECT_EQ(alive, 2);
        KIVLinkedList assigned(true);
        assigned.add(new Counted(alive));
        assigned = owner;
        EXPECT_EQ(alive, 2);
    }
    EXPECT_EQ(alive, 0);
}

TEST(Dictionaries, find_walk_and_shrink)
{
    Dictionary names(2);
    KIVString keys[] = {"x", "y", "z"};
    KIVString value("value");
    for (KIVString& key : keys)
        names.add(key, value);
    KIVString same("y");
    KIVString other("w");
    KIVObject* found = nullptr;
    EXPECT_TRUE(names.lookup_assoc(&same, &found));
    EXPECT_EQ(found, &value);
    EXPECT_FALSE(names.lookup_assoc(&other, &found));

    NameKeyDictionary numbers(1);
    std::set<unsigned long> left;
    for (unsigned long i = 0; i < 100; ++i) {
        numbers.add(i, value);
        left.insert(i);
    }
    DictionaryIterator pairs(&numbers);
    while (pairs.advance()) {
        const unsigned long key = pairs.get_assoc()->hash;
        left.erase(key);
        if (key % 3 == 0)
            pairs.remove();
    }
    EXPECT_TRUE(left.empty());
    EXPECT_EQ(numbers.count(), 66);
    EXPECT_FALSE(numbers.lookup_assoc(99, &found));
    EXPECT_TRUE(numbers.lookup_assoc(98, &found));
}

TEST(SlotList, agrees_with_a_set_of_numbers)
{
    std::mt19937 random(7);
    const auto number = [&] { return static_cast<int>(random() % 60); };
    SlotList list;
    std::set<int> model;
    for (int step = 0; step < 3000; ++step) {
        const int first = number();
        const int last = first + number() / 8;
        const bool adds = random() % 2;
        adds ? list.add_range(first, last) : list.remove_range(first, last);
        for (int i = first; i <= last; ++i)
            adds ? void(model.insert(i)) : void(model.erase(i));
        ASSERT_EQ(list.contains_slot(first), adds);

        std::vector<int> forwards;
        std::vector<int> backwards;
        for (SlotIterator i(&list); i++;)
            forwards.push_back(i());
        for (SlotIterator i(&list); i--;)
            backwards.push_back(i());
        ASSERT_EQ(forwards, std::vector<int>(model.begin(), model.end()));
        ASSERT_EQ(backwards, std::vector<int>(model.rbegin(), model.rend()));
        for (std::size_t i = 1; i < list.inq_ranges().size(); ++i)
            ASSERT_GT(list.inq_ranges()[i].first, list.inq_ranges()[i - 1].last + 1);
    }
}

TEST(SlotList, reaches_the_ends_of_int)
{
    SlotList list;
    list.add_range(INT_MIN, INT_MAX);
    list.remove_slot(0);
    EXPECT_TRUE(list.contains_slot(INT_MAX));
    EXPECT_FALSE(list.contains_slot(0));
    SlotList other;
    other.add_slot(0);
    list.merge(other);
    EXPECT_EQ(list.inq_ranges().size(), 1U);
}

TEST(KIVString, builds_texts)
{
    EXPECT_TRUE(KIVString("abc", 2) == "ab");
    EXPECT_TRUE(KIVString("abc", 0).is_null());
    EXPECT_TRUE(KIVString("abc", 9) == "abc");
    EXPECT_TRUE(KIVString(7, 4) == "0007");
    EXPECT_TRUE(KIVString(12345, 4) == "12345");
    EXPECT_TRUE(KIVString(-7, 0) == "-7");
    EXPECT_TRUE(KIVString(1.5) == "1.5");
    EXPECT_TRUE("a" + KIVString("b") + "c" + KIVString('d') == "abcd");
    EXPECT_TRUE(KIVString("Layer One").contains_no_case("layer"));
    EXPECT_FALSE(KIVString("Layer One").contains("layer"));
    EXPECT_TRUE((KIVString("a") += static_cast<const char*>(nullptr)) == "a");
    EXPECT_TRUE(KIVString("ONE").is_equal_no_case("one"));
    EXPECT_FALSE(KIVString("ONE").is_equal_no_case("ones"));
}

TEST(KIVString, takes_paths_apart)
{
    KIVString path("/scenes/shot 1");
    EXPECT_TRUE(path.get_file() == "shot 1");
    EXPECT_TRUE(path.get_path() == "/scenes");
    EXPECT_TRUE(KIVString("/scene").get_path() == "/");
    EXPECT_TRUE(KIVString("scene").get_path() == "");
    EXPECT_TRUE(path.append_path("XSheet") == "/scenes/shot 1/XSheet");
    EXPECT_TRUE(path.append_path("/abs/dir") == "/abs/dir");
    KIVString file("a.b/c.tif");
    file.set_extension("tga");
    EXPECT_TRUE(file == "a.b/c.tga");
    file.set_extension("");
    EXPECT_TRUE(file == "a.b/c");
}

TEST(KIVStringSet, holds_each_text_once)
{
    KIVStringSet set(KIVString("tif"));
    KIVStringSet more(KIVString("png"));
    more.add("tif");
    set << more;
    EXPECT_EQ(set.count(), 2);
    EXPECT_TRUE(set.at_index(1) == "png");

    KIVStringList list;
    for (const bool unique : {false, false, true})
        list.add_to_end("tif", unique);
    EXPECT_EQ(list.count(), 2);
}

TEST(ChangeRecorder, undoes_a_step_backwards_and_makes_it_again)
{
    struct Note : ChangeEvt {
        Note(std::string& log, char name) : log(log), name(name) {}
        void undo() override { log += name; }
        void redo() override { log += static_cast<char>(std::toupper(name)); }
        std::string& log;
        char name;
    };
    std::string log;
    ChangeRecorder recorder;
    EXPECT_TRUE(recorder.inq_undo_label().is_null());
    recorder.add(new Note(log, 'a'));
    recorder.add(new Note(log, 'b'));
    recorder.end("Move");
    EXPECT_TRUE(recorder.inq_undo_label() == "Move");
    recorder.end(nullptr);
    EXPECT_EQ(recorder.inq_undo_count(), 1);
    EXPECT_TRUE(recorder.undo());
    EXPECT_FALSE(recorder.undo());
    EXPECT_TRUE(recorder.redo());
    EXPECT_EQ(log, "baAB");
    EXPECT_TRUE(recorder.undo());
    recorder.add(new Note(log, 'c'));
    EXPECT_FALSE(recorder.redo());
}
