#include "compositor/lib/hdr/CNodeDescriptor.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeGenericOpDescriptor.h"
#include "compositor/lib/hdr/CNodeRepository.h"
#include "compositor/lib/src/GraphChanges.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/report_error.h"

KIV_STORED_CLASS(CNodeDescriptor, 106);

namespace {
constexpr FormatVersions HAS_HIDDEN = since(106);
constexpr int MOST_CHANNELS = 65536; // more than any node has: a damaged file

int type_at(int index, int n, const int* types)
{
    return 0 <= index && index < n && types ? types[index] : 0;
}
} // namespace

CNodeDescriptor::CNodeDescriptor(const char* class_name, const char* base_class_name,
                                 KIVReadFunction reader, int version, ClassManager* manager,
                                 const char* user_type_name, int catagory, bool hidden,
                                 int n_inputs, int n_outputs, int type, NewNodeFunction new_node_fn)
    : ClassDescriptor(class_name, base_class_name, reader, version, nullptr),
      user_type_name(user_type_name), catagory_type(catagory), is_hidden(hidden),
      n_inputs(n_inputs), n_outputs(n_outputs), type(type), new_node_fn(new_node_fn)
{
    enter(manager);
}

CNodeDescriptor::CNodeDescriptor(const char* class_name, const char* base_class_name,
                                 KIVReadFunction reader, int version, ClassManager* manager,
                                 const char* user_type_name, int catagory, bool hidden,
                                 int n_inputs, int n_outputs, const int* input_types,
                                 const int* output_types, NewNodeFunction new_node_fn)
    : ClassDescriptor(class_name, base_class_name, reader, version, nullptr),
      user_type_name(user_type_name), catagory_type(catagory), is_hidden(hidden),
      n_inputs(n_inputs), n_outputs(n_outputs), input_types(input_types),
      output_types(output_types), new_node_fn(new_node_fn)
{
    enter(manager);
}

/// The manager completes a record from a file by this one, so it must not meet this before the
/// factory is set.
void CNodeDescriptor::enter(ClassManager* manager)
{
    if (manager)
        manager->enter(this);
    CNodeRepository::inq_repository()->add_descriptor(this);
}

CNodeDescriptor::CNodeDescriptor(KIVIStream& stream) : ClassDescriptor(stream)
{
    RecordReader r(stream);
    r.value(user_type_name);
    r.value(catagory_type);
    r.value(n_inputs);
    r.value(n_outputs);
    r.value(type);
    read_types(stream);
    r.value(is_hidden, HAS_HIDDEN);
}

CNodeDescriptor::~CNodeDescriptor()
{
    CNodeRepository::inq_repository()->remove_descriptor(this);
}

void CNodeDescriptor::read_types(KIVIStream& stream)
{
    const auto is_count = [](int n) { return 0 <= n && n <= MOST_CHANNELS; };
    const std::size_t listed =
        type == 0 && is_count(n_inputs) && is_count(n_outputs)
            ? static_cast<std::size_t>(n_inputs) + static_cast<std::size_t>(n_outputs)
            : 0;
    if (!is_count(n_inputs) || !is_count(n_outputs) ||
        listed > static_cast<std::size_t>(stream.num_chars_in_buffer()) / sizeof(int)) {
        stream.set_error_state(KIVStream::BAD_COUNT);
        n_inputs = n_outputs = 0;
        return;
    }
    read_lists.resize(listed);
    for (int& listed_type : read_lists)
        stream >> listed_type;
    input_types = read_lists.data();
    output_types = read_lists.data() + (listed ? n_inputs : 0);
}

void CNodeDescriptor::storer(KIVOStream& stream)
{
    ClassDescriptor::storer(stream);
    RecordWriter r(stream);
    r.value(user_type_name);
    r.value(catagory_type);
    r.value(n_inputs);
    r.value(n_outputs);
    r.value(type);
    if (type == 0) {
        for (int i = 0; i < n_inputs; ++i)
            r.value(inq_input_type(i));
        for (int i = 0; i < n_outputs; ++i)
            r.value(inq_output_type(i));
    }
    r.value(is_hidden);
}

void CNodeDescriptor::setup_func_refs_from(const ClassDescriptor* other)
{
    ClassDescriptor::setup_func_refs_from(other);
    if (other->inq_class_descriptor() == inq_class_descriptor())
        new_node_fn = static_cast<const CNodeDescriptor*>(other)->new_node_fn;
}

void CNodeDescriptor::did_load()
{
    ClassDescriptor::did_load();
    CNodeRepository::inq_repository()->add_descriptor(this);
}

int CNodeDescriptor::inq_input_type(int index) const
{
    return type != 0 ? type : type_at(index, n_inputs, input_types);
}

int CNodeDescriptor::inq_output_type(int index) const
{
    return type != 0 ? type : type_at(index, n_outputs, output_types);
}

gsl::owner<CNode*> CNodeDescriptor::new_node(CNodeGraph* graph, bool* flag)
{
    if (!new_node_fn)
        load_dll();
    if (!new_node_fn) {
        report_here() << "Can not make new node (null function): " << inq_name() << ".\n";
        return nullptr;
    }
    CNode* node = new_node_fn(graph, flag);
    if (node)
        node->init();
    return node;
}

void CNodeDescriptor::add_generic(CNodeGenericOpDescriptor* generic)
{
    if (!generics) {
        generics = std::make_unique<KIVLinkedList>(false);
        generics->count_changes_in(&GraphChanges::our_count);
    }
    for (const auto* known : generics->of<CNodeGenericOpDescriptor>())
        if (known->inq_name() == generic->inq_name() &&
            known->inq_data_type() == generic->inq_data_type())
            return; // the module of one that came in with a file has been loaded
    generics->add(generic);
}

void CNodeDescriptor::remove_generic(const CNodeGenericOpDescriptor* generic)
{
    if (generics)
        generics->remove(generic);
}
