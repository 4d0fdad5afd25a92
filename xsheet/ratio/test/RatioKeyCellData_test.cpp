#include "tests/support/OldRecord.h"
#include "xsheet/column/hdr/SubColumnWatcher.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/numeric/hdr/NumericTSubColumn.h"
#include "xsheet/numeric/test/numeric_keys.h"
#include "xsheet/ratio/hdr/RatioColumnData.h"
#include "xsheet/ratio/hdr/RatioKeyCellData.h"
#include "xsheet/store_control/hdr/StoreFile.h"

#include <cmath>
#include <pthread.h>

namespace {
/// A sheet with a column to follow, from 0 on frame 1 to 100 on frame 101, and one that follows.
struct Followed {
    Followed()
    {
        sheet.set_length(200);
        sheet.add_sub_column(column, nullptr);
        column->add_sub_column(source, nullptr);
        column->add_sub_column(follower, nullptr);
        key_at(*source, 1, {0.0});
        key_at(*source, 101, {100.0});
    }

    /// A key that follows at `ratio`, with `value` on its own frame.
    NumericKeyCell* follow(int frame, double ratio, double value)
    {
        NumericKeyCell* key = key_at(*follower, frame, {value});
        key->set_is_ratioed(true);
        key->inq_ratio_data()->set_source_column(source);
        key->inq_ratio_data()->set_ratio_value(Vector(1, ratio));
        return key;
    }

    std::vector<double> read(int first, int last) const
    {
        std::vector<double> values;
        for (int frame = first; frame <= last; ++frame)
            values.push_back(follower->inq_element(0, frame));
        return values;
    }

    XSheet sheet{nullptr};
    Column* column = new Column;
    NumericSubColumn* source = new NumericSubColumn(1);
    NumericSubColumn* follower = new NumericSubColumn(1);
};
} // namespace

TEST(RatioKeyCellData, runs_to_the_next_key_whatever_that_follows)
{
    Followed f;
    f.follow(11, 1.0, 10.0);
    NumericKeyCell* next = key_at(*f.follower, 21, {40.0});
    EXPECT_EQ(f.follower->inq_element(0, 16), 15.0) << "it follows on";
    next->set_is_ratioed(false);
    EXPECT_EQ(f.follower->inq_element(0, 16), 25.0) << "from an offset of 0 to one of 20";

    next->set_is_ratioed(true);
    next->inq_ratio_data()->set_source_column(f.source);
    next->inq_ratio_data()->set_ratio_value(Vector(1, 3.0));
    EXPECT_EQ(f.follower->inq_element(0, 21), 40.0);
    EXPECT_EQ(f.follower->inq_element(0, 16), 15.0 * 2.0 - 10.0);
}

TEST(RatioKeyCellData, lets_a_new_key_stand_on_the_way_to_the_next_one)
{
    Followed f;
    f.follow(11, 1.0, 10.0);
    key_at(*f.follower, 21, {40.0})->set_is_ratioed(false);
    f.follower->clear_all_inbetweens();
    const std::vector<double> before = f.read(10, 22);
    EXPECT_EQ(before[6], 25.0);
    f.follower->make_key(16);
    const std::vector<double> after = f.read(10, 22);
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_NEAR(after[i], before[i], 1e-9) << 10 + i;
}

TEST(RatioKeyCellData, follows_with_all_elements_of_a_key_from_elsewhere)
{
    NumericTSubColumn source;
    NumericTSubColumn follower;
    NumericKeyCell* far = key_at(source, 101, {100.0, 200.0});
    key_at(source, 1, {0.0, 0.0});
    NumericKeyCell* key = key_at(follower, 11, {20.0, 30.0});
    key->set_is_ratioed(true);
    key->inq_ratio_data()->set_source_column(&source);
    const Vector before = follower.inq_value(61);
    auto* pasted = static_cast<NumericKeyCell*>(far->duplicate());
    follower.insert_key(pasted, 51);
    EXPECT_EQ(pasted->inq_ratio_data()->inq_order(), 2);
    EXPECT_NEAR(follower.inq_element(0, 61), before.elem(0), 1e-9);
    EXPECT_NEAR(follower.inq_element(1, 61), before.elem(1), 1e-9);
}

namespace {
/// Columns that follow each other, on five frames each, down from the first.
struct Chain {
    explicit Chain(int count)
    {
        sheet.set_length(200);
        sheet.add_sub_column(column, nullptr);
        for (int i = 0; i < count; ++i) {
            columns.push_back(new NumericSubColumn(1));
            column->add_sub_column(columns.back(), nullptr);
            for (int frame = 1; frame <= 41; frame += 10)
                add_key(i, frame);
        }
    }

    void add_key(int i, int frame)
    {
        NumericKeyCell* key = key_at(*columns.back(), frame, {0.0});
        if (i == 0)
            return;
        key->set_is_ratioed(true);
        key->inq_ratio_data()->set_source_column(columns[columns.size() - 2]);
        key->inq_ratio_data()->set_lock_frame(1);
    }

    /// Changes the head, and compares the end with it there and between two keys.
    void carry(double value)
    {
        data_of(columns.front()->inq_last_key())->set_element(0, value);
        EXPECT_EQ(columns.back()->inq_element(0, 41), value);
        EXPECT_NEAR(columns.back()->inq_element(0, 36), value / 2, 1e-9);
    }

    XSheet sheet{nullptr};
    Column* column = new Column;
    std::vector<NumericSubColumn*> columns;
};

void on_a_small_stack(void (*function)())
{
    constexpr std::size_t SMALL = 256 * 1024;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, SMALL);
    const auto run = [](void* called) -> void* {
        reinterpret_cast<void (*)()>(called)();
        return nullptr;
    };
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, run, reinterpret_cast<void*>(function)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}
} // namespace

TEST(RatioKeyCellData, carries_changes_down_a_long_chain_on_a_small_stack)
{
    on_a_small_stack([] {
        Chain chain(1000);
        chain.carry(5.0);
        chain.carry(7.0);
        EXPECT_TRUE(chain.columns.back()->inq_is_ratio_looped(chain.columns.front()));
    });
}

TEST(RatioKeyCellData, stands_a_long_ring_of_columns)
{
    on_a_small_stack([] {
        Chain chain(1000);
        auto* first = static_cast<NumericKeyCell*>(chain.columns.front()->inq_first_key());
        first->set_is_ratioed(true);
        first->inq_ratio_data()->set_source_column(chain.columns.back());
        EXPECT_TRUE(chain.columns.front()->inq_is_ratio_looped(chain.columns.front()));
        EXPECT_TRUE(std::isfinite(chain.columns.back()->inq_element(0, 5)));
    });
}

TEST(RatioKeyCellData, rests_while_its_key_is_out_and_makes_up_for_it)
{
    Followed f;
    NumericKeyCell* key = f.follow(51, 1.0, 50.0);
    key->inq_ratio_data()->set_lock_frame(1);
    f.follower->remove_key(key);
    SubColumnWatcher watcher(f.follower, 5, nullptr);
    f.follower->add_watcher(&watcher);
    data_of(f.source->inq_last_key())->set_element(0, 200.0);
    EXPECT_FALSE(watcher.inq_frame_changed(51)) << "nothing of it is there";
    f.follower->insert_key(key, 51);
    EXPECT_EQ(f.follower->inq_element(0, 51), 150.0);
    f.follower->remove_watcher(&watcher);
}

TEST(RatioKeyCellData, copies_and_comes_back_with_its_link)
{
    Followed f;
    f.follow(11, 0.5, 20.0);
    const std::unique_ptr<SubColumn> copy(f.follower->duplicate());
    EXPECT_EQ(static_cast<NumericSubColumn&>(*copy).inq_element(0, 61), 45.0);
    data_of(f.source->inq_last_key())->set_element(0, 200.0);
    EXPECT_EQ(static_cast<NumericSubColumn&>(*copy).inq_element(0, 61),
              f.follower->inq_element(0, 61));

    const auto sheet = stored_and_read(f.sheet);
    ASSERT_TRUE(sheet);
    EXPECT_FALSE(sheet->load_finished_with_abort(nullptr));
    auto* column = static_cast<Column*>(sheet->find_sub_column(1));
    auto* source = static_cast<NumericSubColumn*>(column->find_sub_column(1));
    auto* follower = static_cast<NumericSubColumn*>(column->find_sub_column(2));
    EXPECT_EQ(follower->inq_element(0, 61), f.follower->inq_element(0, 61));
    data_of(source->inq_last_key())->set_element(0, 100.0);
    EXPECT_EQ(follower->inq_element(0, 61), 45.0) << "it watches again";
}

TEST(RatioKeyCellData, comes_back_with_a_source_that_has_left_the_sheet)
{
    Followed f;
    f.follow(11, 0.5, 20.0);
    const std::unique_ptr<SubColumn> source(f.column->remove_sub_column(f.source));
    CharOStream out;
    out.insert_with_class_hdr(&f.sheet);
    CharIStream in(out.inq_container());
    const auto sheet = read_part<XSheet>(in);
    ASSERT_TRUE(sheet);
    EXPECT_FALSE(sheet->load_finished_with_abort(nullptr));
    const std::unique_ptr<KIVLinkedList> columns(sheet->inq_deep_sub_column_list());
    ASSERT_EQ(columns->count(), 2) << "the column and the one that follows";
    auto* follower = static_cast<NumericSubColumn*>(columns->at_index(1));
    EXPECT_EQ(follower->inq_element(0, 61), 45.0);
}

TEST(RatioKeyCellData, reads_old_forms)
{
    for (const int version : {127, 128}) {
        OldRecord record("RatioKeyCellData", version);
        record << 2 << 1.5 << 2.5 << 2 << 3.0 << 4.0;
        record.insert_with_class_hdr(nullptr);
        record << 8;
        record.insert_with_class_hdr(nullptr);
        if (version == 128)
            record << static_cast<int>(KIV_UNIT_PIXELS);
        const auto data = record.read<RatioKeyCellData>();
        ASSERT_TRUE(data) << version;
        EXPECT_EQ(data->inq_order(), 2);
        EXPECT_EQ(data->inq_lock_frame(), 8);
        EXPECT_EQ(data->inq_unit_type(), version == 128 ? KIV_UNIT_PIXELS : KIV_UNIT_FIELDS);
    }
}

TEST(RatioColumnData, finds_the_source_of_an_old_file_by_its_labels)
{
    Followed f;
    OldRecord record("RatioColumnData", 118);
    record << 3.0 << 2.0 << 1L << 1L;
    record.insert_with_class_hdr(nullptr);
    const auto data = record.read<RatioColumnData>();
    ASSERT_TRUE(data);
    data->set_sub_column(f.follower);
    data->load_finished();
    EXPECT_EQ(data->inq_other_sub_column(), f.source);
    EXPECT_EQ(data->calc_element(0, 51), 103.0);
    SubColumnWatcher watcher(f.follower, 9, nullptr);
    f.follower->add_watcher(&watcher);
    data->set_add_constant(4.0);
    EXPECT_TRUE(watcher.inq_frame_changed(200));
    watcher.clear_all_frames();
    data_of(f.source->inq_first_key())->set_element(0, 1.0);
    EXPECT_TRUE(watcher.inq_frame_changed(50));
    f.follower->remove_watcher(&watcher);
}

TEST(RatioColumnData, finds_what_stands_now_for_the_half_of_a_move)
{
    Followed f;
    auto* node_column = new Column;
    auto* move = new Column;
    auto* both = new NumericTSubColumn;
    both->set_label(3);
    move->add_sub_column(both, nullptr);
    node_column->add_sub_column(move, nullptr);
    move->set_label(9);
    f.sheet.add_sub_column(node_column, nullptr);
    OldRecord record("RatioColumnData", 1);
    record << 0.0 << 1.0 << static_cast<long>(node_column->inq_label()) << 2L;
    record.insert_with_class_hdr(nullptr);
    const auto data = record.read<RatioColumnData>();
    data->set_sub_column(f.follower);
    data->load_finished();
    EXPECT_EQ(data->inq_other_sub_column(), both);
}
