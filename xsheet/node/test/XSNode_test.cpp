#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/NodeClass.h"
#include "kivlib/hdr/Matrix.h"
#include "kivlib/hdr/Record.h"
#include "tests/support/Captured.h"
#include "tests/support/OldRecord.h"
#include "tests/support/TempFolder.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/node/hdr/DWNode.h"
#include "xsheet/node/test/old_node.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include <gtest/gtest.h>

namespace {
/// A node with one sub-column, and a number behind all that its bases store.
class GlowNode : public DWNode {
    KIV_NODE(GlowNode, DWNode);

public:
    GlowNode() { init_subcolumn(new SubColumn, "Glow"); }
    explicit GlowNode(KIVIStream& stream) : DWNode(stream) { RecordReader(stream).value(number); }
    void storer(KIVOStream& stream) override
    {
        DWNode::storer(stream);
        RecordWriter(stream).value(number);
    }
    gsl::owner<CNodeOp*> new_nodeop(int) override { return nullptr; }
    bool inq_is_source_image_node() const override { return is_source; }

    void add(unsigned long label, gsl::owner<SubColumn*> sub_column)
    {
        add_subcolumn(label, sub_column, "More");
    }

    int number = 7;
    bool is_source = false;
};

class GlowNodes : public NodeInitialiser {
public:
    GlowNodes()
    {
        constexpr NodeFamily FILTERS = {.catagory = 20, .n_inputs = 1, .n_outputs = 1, .type = 100};
        constexpr NodeRow ROWS[] = {node_row<GlowNode>("Glow/Shine&A B\tC\nD", -1)};
        add_nodes(FILTERS, ROWS);
        static_link_setup();
    }
};
const GlowNodes the_glow_nodes;

/// As the file of a graph and that of its sheet bring them back.
struct Reloaded {
    Reloaded(const XSheet& old_sheet, const CNodeGraph& old_graph)
        : sheet(stored_and_read(old_sheet)), graph(stored_and_read(old_graph))
    {
        sheet->load_finished_with_abort(nullptr);
    }
    GlowNode* node(int i) { return static_cast<GlowNode*>(graph->inq_nodes_list()->at_index(i)); }

    std::unique_ptr<XSheet> sheet;
    std::unique_ptr<CNodeGraph> graph;
};

class UserFolder {
public:
    UserFolder() { ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1); }
    ~UserFolder() { ::unsetenv("XDG_CONFIG_HOME"); }
    TempFolder folder;
};
} // namespace

TEST(XSNode, enters_and_leaves_graph_and_sheet_with_its_column)
{
    XSheet sheet(nullptr);
    CNodeGraph graph(&sheet);
    auto* node = new GlowNode;
    EXPECT_EQ(node->inq_column_label(), 0u);

    node->add_to_graph(&graph);
    EXPECT_EQ(node->inq_column()->inq_column(), &sheet);
    EXPECT_EQ(sheet.find_sub_column(node->inq_column_label()), node->inq_column());

    const unsigned long label = node->inq_column_label();
    node->remove_from_graph();
    EXPECT_EQ(node->inq_column()->inq_column(), nullptr);
    EXPECT_EQ(node->inq_column_label(), 0u);
    EXPECT_EQ(sheet.find_sub_column(label), nullptr);

    node->add_to_graph(&graph);
    EXPECT_EQ(node->inq_column_label(), label);
    Column* column = node->inq_column();
    delete graph.remove_node(node);
    EXPECT_EQ(sheet.find_sub_column(label), column) << "the sheet has it still";
    EXPECT_EQ(column->inq_node(), nullptr);
}

TEST(XSNode, shares_no_column_with_a_second_node_of_a_damaged_file)
{
    XSheet sheet(nullptr);
    CNodeGraph graph(&sheet);
    (new GlowNode)->add_to_graph(&graph);
    auto* second = new GlowNode;
    graph.add_node(second);
    second->inq_column()->set_label(1);
    second->node_just_added_to_graph();

    Reloaded loaded(sheet, graph);
    loaded.graph->load_finished_with_abort(loaded.sheet.get(), false);
    EXPECT_NE(loaded.node(0)->inq_column(), nullptr);
    EXPECT_EQ(loaded.node(1)->inq_column(), nullptr);
}

TEST(XSNode, reads_the_fields_of_each_version)
{
    const auto read = [](int version) {
        OldRecord old("GlowNode", version);
        tell_old_node(old, version, 12);
        if (version >= 111)
            old << 99;
        if (version >= 145)
            old << 1;
        old << 31;
        return old.read<GlowNode>();
    };
    for (const int version : {110, 111, 144, 145, 146}) {
        const auto node = read(version);
        ASSERT_NE(node, nullptr) << version;
        EXPECT_EQ(node->inq_column_label(), 12u) << version;
        EXPECT_EQ(node->inq_column_has_changed(), version >= 145) << version;
        EXPECT_EQ(node->number, 31) << version;
    }
}

TEST(XSNode, keeps_the_preferences_of_its_type_in_a_file)
{
    const UserFolder user;
    GlowNode node;
    EXPECT_EQ(node.inq_prefs_file_for_type(false),
              user.folder.path("Montaray/Glow_Shine_A_B_C\nD_col.prefs"));
    node.store_column_preferences();
    EXPECT_FALSE(user.folder.has("Montaray")) << "no sub-column has settings";

    auto* strength = new NumericSubColumn;
    node.add(2, strength);
    strength->set_precision(5);
    node.store_column_preferences();
    strength->set_precision(1);
    node.load_and_apply_column_preferences();
    EXPECT_EQ(strength->inq_precision(), 5);

    user.folder.write("Montaray/Glow_Shine_A_B_C\nD_col.prefs", "no such thing");
    strength->set_precision(1);
    node.load_and_apply_column_preferences();
    EXPECT_EQ(strength->inq_precision(), 1);
}

TEST(XSNode, leaves_no_half_of_a_file_of_preferences)
{
    const UserFolder user;
    const Captured captured;
    const std::string file = "Montaray/Glow_Shine_A_B_C\nD_col.prefs";
    GlowNode node;
    node.add(2, new NumericSubColumn);
    std::filesystem::create_directories(user.folder.path(file + "~").str()); // nowhere to write
    user.folder.write(file, "as it was");
    node.store_column_preferences();
    EXPECT_EQ(user.folder.read(file), "as it was");
    std::filesystem::remove(user.folder.path(file + "~").str());
    std::filesystem::remove(user.folder.path(file).str());
    std::filesystem::create_directories(user.folder.path(file).str()); // no place to take
    node.store_column_preferences();
    EXPECT_FALSE(user.folder.has(file + "~"));
    EXPECT_EQ(captured.inq_alerts().size(), 0U) << "settings are not worth a panel";
}

TEST(XSNode, tells_the_user_that_preferences_have_no_place)
{
    const UserFolder user;
    const Captured captured;
    ::setenv("XDG_CONFIG_HOME", user.folder.path("file").c_str(), 1);
    user.folder.write("file", "");
    GlowNode node;
    node.add(2, new NumericSubColumn);
    node.store_column_preferences();
    const std::string folder = user.folder.path("file/Montaray").str();
    EXPECT_EQ(captured.inq_alerts(), std::vector<std::string>{"Can't make directory " + folder +
                                                              "\nPreferences not saved"});
}
