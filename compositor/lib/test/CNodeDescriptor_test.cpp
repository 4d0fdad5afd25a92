#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGenericOpDescriptor.h"
#include "compositor/lib/hdr/CNodeRepository.h"
#include "compositor/lib/hdr/StandInCNode.h"
#include "compositor/lib/test/SampleNodes.h"
#include "kivlib/hdr/KIVDLLUsageList.h"
#include "tests/support/Captured.h"
#include "tests/support/OldRecord.h"

#include <gtest/gtest.h>

using namespace sample;

namespace {
constexpr int INPUT_TYPES[] = {7, 8};
constexpr int OUTPUT_TYPES[] = {9};

CNodeDescriptor* new_descriptor(const char* class_name, NewNodeFunction new_node = nullptr)
{
    return new CNodeDescriptor(class_name, "CNode", nullptr, 77, nullptr, "Two", 21, true, 2, 1,
                               INPUT_TYPES, OUTPUT_TYPES, new_node);
}

CNodeGenericOpDescriptor* new_generic(const char* class_name, const char* node_type,
                                      NewOpFunction new_op = nullptr)
{
    return new CNodeGenericOpDescriptor(class_name, "CNodeGenericOp", nullptr, -1, nullptr,
                                        node_type, PAINT, new_op);
}

CNodeDescriptor* descriptor_of(ClassDescriptor* record)
{
    return static_cast<CNodeDescriptor*>(record);
}
} // namespace

TEST(CNodeDescriptor, comes_back_without_its_code_and_with_old_versions_shown)
{
    const auto back = stored_and_read(*new_descriptor("DescriptorTestStored"));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->inq_name(), "DescriptorTestStored");
    EXPECT_EQ(back->inq_version(), 77);
    EXPECT_EQ(back->inq_user_type_name(), "Two");
    EXPECT_EQ(back->inq_catagory_type(), 21);
    EXPECT_EQ(back->inq_input_type(1), 8);
    EXPECT_EQ(back->inq_output_type(0), 9);
    EXPECT_TRUE(back->inq_is_hidden());
    const Captured captured;
    EXPECT_EQ(back->new_node(nullptr, nullptr), nullptr);
    const std::string errors = captured.inq_errors();
    EXPECT_NE(errors.find("Can not make new node (null function): DescriptorTestStored.\n"),
              std::string::npos);
    EXPECT_NE(errors.find("compositor/lib/src/CNodeDescriptor"), std::string::npos);

    OldRecord old("CNodeDescriptor", 105);
    old << "DescriptorTestOld"
        << "CNode" << -1 << "Old" << 30 << 0 << 1 << 100;
    const auto shown = old.read<CNodeDescriptor>();
    ASSERT_TRUE(shown);
    EXPECT_FALSE(shown->inq_is_hidden());
    EXPECT_EQ(shown->inq_output_type(0), 100);
}

TEST(CNodeDescriptor, refuses_channel_counts_beyond_its_record)
{
    for (const int type : {0, 100}) {
        OldRecord old("CNodeDescriptor", 106);
        old << "DescriptorTestBad"
            << "CNode" << -1 << "Bad" << 30 << 2000000000 << 2000000000 << type << 0;
        EXPECT_EQ(old.read<CNodeDescriptor>(), nullptr);
    }
}

TEST(CNodeDescriptor, makes_nodes_once_the_module_of_a_class_is_there)
{
    ClassManager* manager = ClassManager::inq_main();
    for (const bool enters_itself : {true, false}) {
        const char* name = enters_itself ? "DescriptorTestSelf" : "DescriptorTestLate";
        CNodeDescriptor* from_stream = stored_and_read(*new_descriptor(name)).release();
        from_stream->did_load();
        ASSERT_EQ(manager->find_cd_for(name), from_stream);
        const auto reader = [](KIVIStream&) -> KIVObject* { return nullptr; };
        auto* module =
            new CNodeDescriptor(name, "CNode", reader, 77, enters_itself ? manager : nullptr,
                                "Late", 21, true, 2, 1, PAINT, SampleMix::new_node_s);
        module->set_stored_type(&stored::type_of<SampleMix>);
        if (!enters_itself)
            manager->enter(module);
        bool flag = true;
        const std::unique_ptr<CNode> node(from_stream->new_node(nullptr, &flag));
        ASSERT_TRUE(node);
        EXPECT_FALSE(flag);
        EXPECT_EQ(node->inq_n_input_channels(), 2);
        EXPECT_EQ(from_stream->inq_stored_type(), &stored::type_of<SampleMix>);
    }
}

/// A module's node classes: one of its own, and one that goes by a name that is taken.
class NodeModule : public NodeInitialiser {
public:
    explicit NodeModule(ClassManager* manager)
    {
        constexpr NodeFamily FAMILY = {.catagory = 21, .n_inputs = 1, .n_outputs = 1, .type = 100};
        NodeRow rows[] = {node_row<SampleMix>("Module's own", -1), node_row<SampleLine>("Line", 7)};
        rows[0].class_name = "DescriptorTestModule";
        rows[0].set_descriptor = [](ClassDescriptor*) {};
        add_nodes(FAMILY, rows);
        if (!manager)
            throw std::bad_alloc();
        setup(manager);
    }
};

TEST(NodeInitialiser, leaves_nothing_of_a_module_that_fails_and_no_second_class_of_a_name)
{
    const KIVLinkedList& all = CNodeRepository::inq_repository()->inq_descriptors();
    const ClassManager* manager = ClassManager::inq_main();
    const ClassDescriptor* line = manager->find_cd_for("SampleLine");
    const int count = all.count();
    auto* generic = new_generic("DescriptorTestModuleOp", "DescriptorTestModule");
    const Captured captured;
    EXPECT_THROW(NodeModule(nullptr), std::bad_alloc);
    EXPECT_EQ(all.count(), count);
    EXPECT_EQ(manager->find_cd_for("DescriptorTestModule"), nullptr);
    EXPECT_TRUE(CNodeRepository::inq_repository()->inq_pending_generics().find(generic));

    const NodeModule module(ClassManager::inq_main());
    EXPECT_EQ(all.count(), count + 1);
    auto* own = descriptor_of(manager->find_cd_for("DescriptorTestModule"));
    ASSERT_TRUE(own);
    EXPECT_TRUE(own->inq_generic_descriptors()->find(generic));
    EXPECT_EQ(manager->find_cd_for("SampleLine"), line);
    EXPECT_EQ(SampleLine::inq_class_descriptor_s(), line);
    EXPECT_NE(captured.inq_errors().find("The node class SampleLine is there already.\n"),
              std::string::npos);
}

TEST(CNodeRepository, joins_generics_to_their_node_class_in_either_order)
{
    const KIVLinkedList& pending = CNodeRepository::inq_repository()->inq_pending_generics();
    auto* early = new_generic("DescriptorTestEarlyOp", "DescriptorTestGeneric");
    EXPECT_TRUE(pending.find(early));
    const CNodeDescriptor* node_class = new_descriptor("DescriptorTestGeneric");
    EXPECT_FALSE(pending.find(early));
    auto* late = new_generic("DescriptorTestLateOp", "DescriptorTestGeneric");
    const KIVLinkedList* generics = node_class->inq_generic_descriptors();
    ASSERT_TRUE(generics);
    EXPECT_EQ(generics->at_index(0), early);
    EXPECT_EQ(generics->at_index(1), late);
    EXPECT_TRUE(pending.find(new_generic("DescriptorTestLostOp", "DescriptorTestNoClass")));

    OldRecord record("CNodeGenericOpDescriptor", 120);
    record << "DescriptorTestGoneOp"
           << "CNodeGenericOp" << -1 << PAINT << "DescriptorTestGeneric";
    auto read = record.read<CNodeGenericOpDescriptor>();
    EXPECT_EQ(generics->count(), 3);
    read.reset();
    EXPECT_EQ(generics->count(), 2);
}

TEST(CNodeGenericOpDescriptor, is_completed_by_its_module)
{
    CNodeGenericOpDescriptor* from_stream =
        stored_and_read(*new_generic("DescriptorTestOp", "DescriptorTestNoClass")).release();
    EXPECT_EQ(from_stream->inq_node_type(), "DescriptorTestNoClass");
    EXPECT_EQ(from_stream->inq_data_type(), PAINT);
    from_stream->did_load();
    {
        const Captured captured;
        EXPECT_EQ(from_stream->inq_nodeop(nullptr), nullptr);
        const std::string errors = captured.inq_errors();
        EXPECT_NE(errors.find("Can not make new node (null function): DescriptorTestOp.\n"),
                  std::string::npos);
        EXPECT_NE(errors.find("compositor/lib/src/CNodeGenericOpDescriptor"), std::string::npos);
    }
    const auto new_op = [](CNode* node) { return new CNodeOp(node); };
    ClassManager::inq_main()->enter(
        new_generic("DescriptorTestOp", "DescriptorTestNoClass", new_op));
    const std::unique_ptr<CNode> node(new_node<SampleLine>());
    const std::unique_ptr<CNodeOp> op(from_stream->inq_nodeop(node.get()));
    EXPECT_TRUE(op);
}

TEST(StandInCNode, answers_for_its_class_and_is_never_evaluated)
{
    CNodeDescriptor* line = descriptor_of(SampleLine::inq_class_descriptor_s());
    StandInCNode entry(line);
    EXPECT_EQ(entry.inq_desc(), line);
    EXPECT_EQ(entry.inq_type_name(), "Line");
    EXPECT_EQ(entry.inq_type(), -1);
    EXPECT_TRUE(entry.inq_is_fully_connected());
    const Captured captured;
    EXPECT_EQ(entry.new_nodeop(PAINT), nullptr);
    EXPECT_NE(captured.inq_errors().find("compositor/lib/src/StandInCNode"), std::string::npos);
    EXPECT_NE(captured.inq_errors().find("Program error.\n"), std::string::npos);

    const MacroStandInCNode macro(line, "/scenes/macros/blur.two.mac");
    EXPECT_EQ(macro.inq_name(), "blur.two");
    EXPECT_EQ(macro.inq_displayed_type_name(), "Macro");
}
