#include "scene/hdr/KIVScene.h"
#include "tests/support/OldRecord.h"
#include "tests/support/OwnSettings.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/node/hdr/FrameNumSubColPrefs.h"
#include "xsheet/sequence/hdr/FrameNumberColumn.h"
#include "xsheet/sequence/hdr/FrameNumberSubColumn.h"
#include "xsheet/sequence/hdr/NotesSubColumn.h"
#include "xsheet/sequence/hdr/ScribbleLine.h"

namespace {
/// A scene with a column of frame numbers.
struct NumberedScene {
    NumberedScene() : scene(KIVScene::inq_unsetup_scene())
    {
        auto* column = new FrameNumberColumn;
        column->init_after_construction();
        scene->inq_xsheet()->add_column(column, nullptr);
        numbers = static_cast<FrameNumberSubColumn*>(column->inq_sub_column_list()->at_index(0));
    }

    std::string text(int frame)
    {
        return numbers->inq_cell(frame)->inq_data()->inq_string()->str();
    }

    OwnSettings settings;
    std::unique_ptr<KIVScene> scene;
    FrameNumberSubColumn* numbers;
};
} // namespace

TEST(FrameNumberSubColumn, has_a_key_on_each_frame_of_the_sheet)
{
    NumberedScene film;
    film.scene->inq_xsheet()->set_length(30);
    EXPECT_EQ(film.numbers->inq_key_cell_list()->count(), 30);
    film.scene->inq_xsheet()->set_length(40);
    EXPECT_EQ(film.numbers->inq_key_cell_list()->count(), 40);
    EXPECT_EQ(film.text(31), "31");
    film.scene->inq_xsheet()->set_length(1);
    EXPECT_EQ(film.numbers->inq_last_key_position(), 1);
    EXPECT_FALSE(film.numbers->can_set_length(0));
    EXPECT_FALSE(film.numbers->can_remove_key(film.numbers->inq_first_key()));
}

TEST(FrameNumberSubColumn, prints_each_format)
{
    NumberedScene film;
    film.scene->inq_xsheet()->set_length(1500);
    struct Expected {
        int format;
        const char *at_15, *at_16, *at_17, *at_1500;
    };
    for (const Expected& e : {Expected{1, "15", "16", "17", "1500"},
                              {2, "- 15", "- 16", "- 17", "- 1500"},
                              {3, "' 15", "' 16", "' 17", "' 1500"},
                              {4, "15", "16", "1", "12"},
                              {5, "0: 0.15", "0: 0.16", "0: 0.17", "1: 2.12"},
                              {6, "", "", "", ""}}) {
        film.numbers->set_format(static_cast<FrameNumberFormat>(e.format));
        EXPECT_EQ(film.text(15), e.at_15);
        EXPECT_EQ(film.text(16), e.at_16);
        EXPECT_EQ(film.text(17), e.at_17);
        EXPECT_EQ(film.text(1500), e.at_1500);
    }
}

TEST(FrameNumberSubColumn, comes_back_with_its_format)
{
    NumberedScene film;
    film.numbers->set_format(FRAME_NUMBER_FOOT);
    const auto sheet = stored_and_read(*film.scene->inq_xsheet());
    const std::unique_ptr<KIVLinkedList> found(
        sheet->inq_deep_sub_column_list(FrameNumberSubColumn::TYPE));
    auto* numbers = static_cast<FrameNumberSubColumn*>(found->at_index(0));
    EXPECT_EQ(numbers->inq_format(), FRAME_NUMBER_FOOT);
    EXPECT_EQ(*numbers->inq_cell(17)->inq_data()->inq_string(), "1");
    const std::unique_ptr<SubColumn> copy(numbers->duplicate());
    EXPECT_EQ(static_cast<FrameNumberSubColumn&>(*copy).inq_format(), FRAME_NUMBER_FOOT);
}

TEST(FrameNumberSubColumn, gives_its_format_to_another_by_preferences)
{
    NumberedScene film, other;
    film.numbers->set_format(FRAME_NUMBER_DASH);
    const std::unique_ptr<SubColPrefs> prefs(film.numbers->create_preferences_object());
    const auto read = stored_and_read(static_cast<FrameNumSubColPrefs&>(*prefs));
    other.numbers->apply_preferences_object(nullptr);
    EXPECT_EQ(other.text(3), "3");
    other.numbers->apply_preferences_object(read.get());
    EXPECT_EQ(other.text(3), "- 3");
}

TEST(NotesSubColumn, keeps_and_copies_its_scribbles)
{
    NotesSubColumn notes;
    auto* line = new ScribbleLine(KIVColour(0.5, 0.25, 0.0, 0.5));
    line->add_point(Vector2(1.0, 5.0));
    line->add_point(Vector2(-2.0, 7.0));
    notes.add_scribble(line);
    const std::unique_ptr<SubColumn> copy(notes.duplicate());
    const auto read = stored_and_read(static_cast<NotesSubColumn&>(*copy));
    ASSERT_EQ(read->inq_scribbles()->count(), 1);
    const auto* back = static_cast<ScribbleLine*>(read->inq_scribbles()->at_index(0));
    EXPECT_EQ(back->inq_bounds(), KIVRectangle(-2.0, 5.0, 1.0, 7.0));
    EXPECT_EQ(back->inq_colour(), KIVColour(0.5, 0.25, 0.0, 1.0));
}

TEST(ScribbleLine, refuses_points_that_are_none)
{
    OldRecord old("ScribbleLine", 1);
    KIVColour colour;
    KIVString no_point("x");
    KIVLinkedList points;
    points.add(&no_point);
    old.insert_without_class_hdr(&colour);
    old.insert_with_class_hdr(&points);
    EXPECT_EQ(old.read<ScribbleLine>(), nullptr);
}
