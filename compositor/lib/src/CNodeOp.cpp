#include "compositor/lib/hdr/CNodeOp.h"

#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CDataConvertor.h"
#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "compositor/lib/hdr/CNodeOpArraySet.h"
#include "compositor/lib/hdr/CNodeRepository.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "compositor/lib/src/OpVisit.h"
#include "kivlib/hdr/KIVError.h"

/// What a changed request asked of an op, and what it answered.
struct CNodeOp::Asked {
    unsigned long run = 0; // 0 when the op was told otherwise since
    std::unique_ptr<CData> request;
    std::unique_ptr<CData> answer;
};

CNodeOp::CNodeOp(CNode* node)
    : node(node), node_name(node ? node->inq_name() : KIVString()),
      label(node ? node->inq_label() : 0)
{}

CNodeOp::~CNodeOp() = default;

void CNodeOp::copy_node_info(CNode*) {}

void CNodeOp::copy_request_data_to_inputs()
{
    if (inputs && node_data)
        inputs->copy_request_data_from(node_data.get());
}

void CNodeOp::disabled_copy_request_data_to_inputs()
{
    if (inputs && node_data)
        inputs->copy_request_data_from(node_data.get());
}

void CNodeOp::init_data(AbortPanel*)
{
    if (inq_n_inputs() == 0 || !node_data)
        return;
    if (CData* input = inq_input_data(0))
        input->copy_immediate_data_to(node_data.get());
    else
        node_data->clear_immediate_data();
}

void CNodeOp::generate_data(AbortPanel* abort)
{
    CData* input = inq_input_data(0);
    if (input && node_data)
        input->copy_generated_data_to(node_data.get(), abort);
}

void CNodeOp::disabled_init_data(AbortPanel* abort)
{
    if (!node_data)
        return;
    node_data->clear_immediate_data();
    const int n = inq_n_passed_inputs();
    if (n == 0)
        return;
    if (!inq_input_types_same_as_output()) {
        init_data(abort);
        return;
    }
    for (int i = 0; i < n; ++i) {
        CData* input = inq_input_data(i);
        if (input && n == 1)
            input->copy_immediate_data_to(node_data.get());
        else if (input)
            node_data->union_immediate_data_from(input, abort);
    }
}

void CNodeOp::disabled_generate_data(AbortPanel* abort)
{
    const int n = inq_n_passed_inputs();
    if (n == 0 || !node_data)
        return;
    if (!inq_input_types_same_as_output()) {
        generate_data(abort);
        return;
    }
    for (int i = 0; i < n; ++i) {
        CData* input = inq_input_data(i);
        if (input && n == 1)
            input->copy_generated_data_to(node_data.get(), abort);
        else if (input)
            node_data->union_generated_data_from(input, abort);
    }
}

void CNodeOp::auto_union_immediate_data(AbortPanel* abort)
{
    if (inputs)
        inputs->auto_union_immediate_data(abort);
}

void CNodeOp::auto_union_generated_data(AbortPanel* abort)
{
    if (inputs)
        inputs->auto_union_generated_data(abort);
}

bool CNodeOp::inq_can_composite()
{
    return graph && graph->inq_is_interactive() && !inq_interactive();
}

bool CNodeOp::inq_composite_through()
{
    return graph && graph->inq_is_interactive() && !inq_interactive();
}

bool CNodeOp::inq_interactive()
{
    return false;
}

CNodeOp* CNodeOp::inq_consumer() const
{
    const CNodeOpArraySet* set = parent ? parent->inq_parent() : nullptr;
    return set ? set->inq_node() : nullptr;
}

void CNodeOp::set_inputs(gsl::owner<CNodeOpArraySet*> set)
{
    inputs.reset(set);
}

int CNodeOp::inq_n_inputs() const
{
    return inputs ? inputs->inq_n_channels() : 0;
}

CNodeOpArray* CNodeOp::inq_inputs(int i) const
{
    return inputs ? inputs->inq_nodeop_array(i) : nullptr;
}

CData* CNodeOp::inq_input_data(int i) const
{
    const CNodeOpArray* array = inq_inputs(i);
    return array ? array->inq_data() : nullptr;
}

bool CNodeOp::inq_is_input_channel_selected(int i) const
{
    const CNodeOpArray* array = inq_inputs(i);
    return array && array->inq_is_selected();
}

bool CNodeOp::inq_is_output_channel_selected() const
{
    const CNodeChannelSet* outputs = node ? node->inq_outputs() : nullptr;
    const CNodeChannel* channel = outputs ? outputs->inq_channel(output_channel_index) : nullptr;
    return channel && channel->inq_is_selected();
}

void CNodeOp::set_outputs(int type, gsl::owner<CData*> data)
{
    convertor.reset();
    converted_data.reset();
    asked.reset();
    node_data.reset(data);
    if (!node_data || node_data->inq_type() == type)
        return;
    converted_data.reset(CDataDescriptor::new_data(type));
    CDataConvertorDescriptor* descriptor =
        CNodeRepository::inq_repository()->inq_convertor(node_data->inq_type(), type);
    if (converted_data && descriptor)
        convertor.reset(descriptor->new_convertor(this));
}

void CNodeOp::do_setup_data(bool is_quiescent)
{
    const bool q = is_quiescent && !inq_is_selected();
    const CNodeOp* consumer = inq_consumer();
    is_under_cover = consumer && (parent->inq_has_cover() || consumer->is_under_cover);
    if (convertor)
        convertor->convert_request(node_data.get(), converted_data.get());
    if (inq_is_disabled())
        state = NODEOP_DISABLED;
    else
        state = q ? NODEOP_QUIESCENT : NODEOP_ACTIVE;
    if (state != NODEOP_DISABLED)
        copy_node_info(node);
    hand_request_on();
    quiescent = q;
    awaits_answer = true;
    if (asked)
        asked->run = 0;
}

// Requests come to the upper layers first. A node that only hands its one input on covers with it.
void CNodeOp::promise_cover()
{
    for (CNodeOp* op = this; op && op->parent && !op->converted_data;) {
        if (op->parent->inq_has_cover())
            return;
        op->parent->set_has_cover(true);
        CNodeOp* consumer = op->inq_consumer();
        op = consumer && consumer->inq_n_inputs() == 1 && consumer->inq_composite_through()
                 ? consumer
                 : nullptr;
    }
}

/// A selected channel wakes all that feeds it.
bool CNodeOp::inq_is_selected() const
{
    return (parent && parent->inq_is_selected()) || inq_is_output_channel_selected();
}

bool CNodeOp::inq_is_disabled()
{
    if (node && node->inq_is_disabled())
        return true;
    if (!graph)
        return false;
    if (node && node->inq_is_temp_disabled() && !graph->inq_ignore_temp_disable())
        return true;
    if (graph->inq_is_disabled(label))
        return true;
    return graph->inq_is_interactive() && !inq_interactive() &&
           label != static_cast<unsigned>(graph->inq_interactive_node());
}

void CNodeOp::hand_request_on()
{
    if (state == NODEOP_ACTIVE)
        copy_request_data_to_inputs();
    else
        disabled_copy_request_data_to_inputs();
    if (inputs)
        inputs->update_request_data();
}

// What an op is asked by hand, what feeds it need not be asked: its answer is not kept.
void CNodeOp::do_request_data(AbortPanel*)
{
    take_request();
    forget_request();
}

void CNodeOp::do_immediate_data(AbortPanel* abort)
{
    forget_request();
    answer(abort);
}

void CNodeOp::take_request()
{
    note_request();
    if (convertor)
        convertor->convert_request(node_data.get(), converted_data.get());
    hand_request_on();
}

void CNodeOp::answer(AbortPanel* abort)
{
    is_answering = true;
    auto_union_immediate_data(abort);
    if (state == NODEOP_ACTIVE)
        init_data(abort);
    else
        disabled_init_data(abort);
    if (convertor)
        convertor->convert_immediate(node_data.get(), converted_data.get());
    is_answering = false;
    note_answer();
}

void CNodeOp::note_request()
{
    awaits_answer = true;
    if (asked)
        asked->run = 0;
    CData* output = inq_output_data();
    if (!graph || !output || !output->inq_request_equals(output))
        return;
    if (!asked) {
        CDataDescriptor* descriptor = output->inq_desc();
        asked = std::make_unique<Asked>();
        asked->request.reset(descriptor->new_data());
        asked->answer.reset(descriptor->new_data());
    }
    asked->run = graph->inq_run();
    asked->request->copy_request_data_from(output);
}

/// An answer that was not asked for leaves no request that it answers.
void CNodeOp::note_answer()
{
    const bool was_asked = std::exchange(awaits_answer, false);
    if (!asked)
        return;
    if (!was_asked)
        asked->run = 0;
    if (asked->run != graph->inq_run())
        return;
    CData* output = inq_output_data();
    asked->answer->copy_request_data_from(output);
    output->copy_immediate_data_to(asked->answer.get());
}

/// Whether the op has answered the request that its consumer has just handed it. The request took
/// the answer's place: the answer stands there again, with what the op made of the request.
bool CNodeOp::take_earlier_answer()
{
    CData* output = inq_output_data();
    const bool is_answered = asked && asked->run == graph->inq_run() && !awaits_answer;
    if (!is_answered || !output->inq_request_equals(asked->request.get()))
        return false;
    output->copy_request_data_from(asked->answer.get());
    asked->answer->copy_immediate_data_to(output);
    return true;
}

/// What feeds the op is asked for something else than follows from its own request, nor from those
/// of its consumers. An op that asks so while it answers does the same each time.
void CNodeOp::forget_request()
{
    for (CNodeOp* op = this; op && !op->is_answering; op = op->inq_consumer())
        if (op->asked)
            op->asked->run = 0;
}

/// The op would not answer the same again, nor would its consumers.
void CNodeOp::forget_answers()
{
    for (CNodeOp* op = this; op; op = op->inq_consumer())
        if (op->asked)
            op->asked->run = 0;
}

void CNodeOp::generate_node_data(AbortPanel* abort)
{
    auto_union_generated_data(abort);
    if (state == NODEOP_ACTIVE)
        generate_data(abort);
    else
        disabled_generate_data(abort);
    if (convertor)
        convertor->convert_generated(node_data.get(), converted_data.get(), abort);
}

void CNodeOp::changed_request(int i, AbortPanel* abort)
{
    if (CNodeOpArray* array = inq_inputs(i))
        array->update_request_data();
    if (graph)
        graph->changed_request(i, this, abort);
}

void CNodeOp::changed_request(AbortPanel* abort)
{
    copy_request_data_to_inputs();
    for (int i = 0; graph && i < inq_n_inputs(); ++i)
        graph->changed_request(i, this, abort);
}

bool CNodeOp::signal_exception(gsl::owner<KIVError*> error)
{
    if (graph)
        return graph->signal_exception(error);
    delete error;
    return true;
}

void CNodeOp::report_status(gsl::owner<KIVError*> status)
{
    if (graph)
        graph->report_status(status);
    else
        delete status;
}

/// A disabled op is a wire on its first input; a quiescent one merges them all.
int CNodeOp::inq_n_passed_inputs() const
{
    return state == NODEOP_DISABLED ? std::min(inq_n_inputs(), 1) : inq_n_inputs();
}

bool CNodeOp::inq_input_types_same_as_output() const
{
    const int type = node_data->inq_type();
    for (int i = 0; i < inq_n_inputs(); ++i) {
        const CData* input = inq_input_data(i);
        if (input && input->inq_type() != type)
            return false;
    }
    return true;
}

bool CNodeOp::inq_all_direct_composite()
{
    return inq_all_direct_composite(inq_direct_phase());
}

CData* CNodeOp::inq_composite_output(int type)
{
    return inq_composite_output(type, inq_direct_phase());
}

CData* CNodeOp::inq_converted_composite_output(int type)
{
    const unsigned long phase = inq_direct_phase();
    CNodeOp* consumer = inq_consumer();
    CData* found = consumer && consumer->inq_lets_through(phase)
                       ? consumer->inq_composite_output(type, phase)
                       : nullptr;
    return found ? found : inq_output_data();
}

/// 0 without a graph, when nothing that was found is kept.
unsigned long CNodeOp::inq_direct_phase() const
{
    return graph ? graph->inq_direct_phase() : 0;
}

bool CNodeOp::inq_composites_directly()
{
    return convertor ? convertor->inq_can_composite() : inq_can_composite();
}

bool CNodeOp::inq_lets_through(unsigned long phase)
{
    return inq_composite_through() && inq_all_direct_composite(phase);
}

bool CNodeOp::inq_knows_all_direct(unsigned long phase) const
{
    return phase != 0 && direct_phase == phase;
}

bool CNodeOp::inq_all_direct_composite(unsigned long phase)
{
    return inq_knows_all_direct(phase) ? is_all_direct : find_all_direct_composite(phase);
}

/// An input that only lets through what feeds it is looked through: its inputs have to comply too.
/// One that doesn't comply speaks for all that were looked through on the way to it.
bool CNodeOp::find_all_direct_composite(unsigned long phase)
{
    std::vector<OpVisit> path{{this}};
    const auto settle = [&](bool direct) {
        CNodeOp* op = path.back().op;
        op->is_all_direct = direct;
        op->direct_phase = phase;
        path.pop_back();
    };
    bool complies = true;
    while (!path.empty()) {
        CNodeOp* input = complies ? path.back().next_input() : nullptr;
        if (!input)
            settle(complies);
        else if (input->inq_composites_directly())
            continue;
        else if (!input->inq_composite_through())
            complies = false;
        else if (input->inq_knows_all_direct(phase))
            complies = input->is_all_direct;
        else
            path.push_back({input});
    }
    return complies;
}

bool CNodeOp::inq_knows_target(int type, unsigned long phase) const
{
    return phase != 0 && target_phase == phase && target_type == type;
}

/// From consumer to consumer, as far as all that feeds them can be drawn straight through: the
/// last of them that has data of the type offers them, to each op on the way there too.
CData* CNodeOp::inq_composite_output(int type, unsigned long phase)
{
    CData* found = nullptr;
    const CNodeOp* offering = nullptr;
    CNodeOp* last = this;
    for (CNodeOp* op = this; op;) {
        last = op;
        const bool is_known = op->inq_knows_target(type, phase);
        CData* offered = is_known ? op->target : op->node_data.get();
        if (offered && offered->inq_type() == type) {
            found = offered;
            offering = op;
        }
        CNodeOp* consumer = is_known || op->converted_data ? nullptr : op->inq_consumer();
        op = consumer && consumer->inq_lets_through(phase) ? consumer : nullptr;
    }
    share_target(found, offering, last, type, phase);
    return found;
}

/// Behind the op that offers the target there is none.
void CNodeOp::share_target(CData* found, const CNodeOp* offering, const CNodeOp* last, int type,
                           unsigned long phase)
{
    for (CNodeOp* op = this;; op = op->inq_consumer()) {
        op->target = found;
        op->target_type = type;
        op->target_phase = phase;
        if (op == offering)
            found = nullptr;
        if (op == last)
            return;
    }
}
