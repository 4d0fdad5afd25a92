#pragma once

#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CDataConvertor.h"
#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGenericOpDescriptor.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "kivlib/hdr/IntArray.h"
#include "tests/graph_model/OpRules.h"

#include <memory>

// Nodes, ops, data and convertors of the library's kinds, which tell `our_trace` what they do.

inline Trace our_trace;
inline int our_n_ops = 0; // made for an evaluation

/// Whatever type it has, its facts are united and handed on in the same way.
class TracedData : public CData {
public:
    explicit TracedData(int type) : type(type) {}
    template <int TYPE> static CData* new_data() { return new TracedData(TYPE); }
    static Facts* facts_of(CData* data)
    {
        return data ? &static_cast<TracedData*>(data)->facts : nullptr;
    }

    CDataDescriptor* inq_desc() const override { return CDataDescriptor::find_desc_for(type); }
    int inq_type() const override { return type; }
    int inq_frameno() const override { return 1; }

    using CData::union_generated_data_from;
    using CData::union_immediate_data_from;
    void union_immediate_data_from(CNodeOpArray* inputs, AbortPanel*) override
    {
        unite(*inputs, &Facts::immediate);
    }
    void union_generated_data_from(CNodeOpArray* inputs, AbortPanel*) override
    {
        unite(*inputs, &Facts::generated);
    }
    void union_immediate_data_from(CData* input, AbortPanel*) override
    {
        add(input, &Facts::immediate);
    }
    void union_generated_data_from(CData* input, AbortPanel*) override
    {
        add(input, &Facts::generated);
    }
    void copy_request_data_from(CData* to) override { facts.request = facts_of(to)->request; }
    void copy_immediate_data_to(CData* to) override { facts_of(to)->immediate = facts.immediate; }
    void copy_generated_data_to(CData* to, AbortPanel*) override
    {
        facts_of(to)->generated = facts.generated;
    }
    bool inq_request_equals(const CData* other) const override
    {
        return facts.request == static_cast<const TracedData*>(other)->facts.request;
    }
    void clear_immediate_data() override { facts.immediate = 0; }
    void clear_generated_data() override { facts.generated = 0; }

private:
    void unite(CNodeOpArray& inputs, FactsMember member)
    {
        const std::unique_ptr<IntArray> order(sort_input_order(&inputs));
        for (int i = 0; i < order->size(); ++i)
            add(inputs.inq_data(order->inq_element(i)), member);
    }
    void add(CData* input, FactsMember member)
    {
        if (input)
            facts.*member = mix(facts.*member, facts_of(input)->*member);
    }

    int type;
    Facts facts;
};

class TracedConvertor : public CDataConvertor {
public:
    using CDataConvertor::CDataConvertor;

    void convert_request(CData* own, CData* converted) override
    {
        of(own).request = mix(of(converted).request, 77);
    }
    void convert_immediate(CData* own, CData* converted) override
    {
        of(converted).immediate = mix(of(own).immediate, 78);
    }
    void convert_generated(CData* own, CData* converted, AbortPanel*) override
    {
        of(converted).generated = mix(of(own).generated, 79);
    }
    void convert_change(CData*, CData*) override {}

private:
    static Facts& of(CData* data) { return *TracedData::facts_of(data); }
};

class TracedConvertorDescriptor : public CDataConvertorDescriptor {
public:
    using CDataConvertorDescriptor::CDataConvertorDescriptor;
    gsl::owner<CDataConvertor*> new_convertor(CNodeOp* owner) override
    {
        return new TracedConvertor(owner);
    }
};

class TracedOp : public CNodeOp {
public:
    TracedOp(CNode* node, const GraphModel::Manner& manner)
        : CNodeOp(node), manner(manner), serial(our_n_ops++)
    {}

    void copy_node_info(CNode*) override { say("info", *this); }
    void copy_request_data_to_inputs() override
    {
        say("ask", *this);
        manner.mixes ? mix_requests(*this) : CNodeOp::copy_request_data_to_inputs();
    }
    void disabled_copy_request_data_to_inputs() override
    {
        say("pass", *this);
        CNodeOp::disabled_copy_request_data_to_inputs();
    }
    void init_data(AbortPanel* abort) override
    {
        say("init", *this);
        ask_again(*this, [&](int asked) {
            asked == GraphModel::Manner::ALL ? changed_request(abort)
                                             : changed_request(asked, abort);
        });
        turn();
        manner.mixes ? mix_data(*this, &Facts::immediate) : CNodeOp::init_data(abort);
    }
    void generate_data(AbortPanel* abort) override
    {
        say("draw", *this);
        manner.mixes ? mix_data(*this, &Facts::generated) : CNodeOp::generate_data(abort);
    }
    void disabled_init_data(AbortPanel* abort) override
    {
        say("wire", *this);
        CNodeOp::disabled_init_data(abort);
    }
    void disabled_generate_data(AbortPanel* abort) override
    {
        say("wire drawn", *this);
        CNodeOp::disabled_generate_data(abort);
    }
    bool inq_interactive() override { return manner.is_interactive; }

    Facts* own() const { return TracedData::facts_of(inq_node_data()); }
    Facts* of_converted() const { return TracedData::facts_of(inq_converted_data()); }
    Facts* received(int i) const { return TracedData::facts_of(inq_inputs(i)->inq_data()); }
    int id() const { return std::stoi(inq_node_name().str()); }
    static Trace& trace() { return our_trace; }

    const GraphModel::Manner manner;
    const int serial;

private:
    void turn()
    {
        CNodeOpArray* array = inq_inputs(manner.turns);
        IntArray order;
        for (const int place : new_order(*this, array ? array->inq_n_nodes() : 0))
            order.add(place);
        if (order.size() > 0)
            array->reorder(&order, manner.forgets);
    }
};

/// Its name is its number.
class TracedNode : public CNode {
public:
    TracedNode(int id, const GraphModel::Species& species, CNodeDescriptor* descriptor,
               const GraphModel::Manner& manner)
        : id(id), species(species), descriptor(descriptor), manner(manner)
    {
        init();
    }

    ClassDescriptor* inq_class_descriptor() const override { return descriptor; }
    int inq_type() const override { return -1; }
    KIVString inq_name() const override { return std::to_string(id); }
    bool inq_is_universal() const override { return species.kind == GraphModel::Kind::UNIVERSAL; }
    bool inq_is_generic() const override { return species.kind == GraphModel::Kind::GENERIC; }
    gsl::owner<CNodeOp*> new_nodeop(int requested_type) override
    {
        our_trace.lines.push_back(text_of_new_op(std::size_t(our_n_ops), id, requested_type));
        return new TracedOp(this, manner);
    }

private:
    int id;
    const GraphModel::Species& species;
    CNodeDescriptor* descriptor;
    GraphModel::Manner manner;
};
