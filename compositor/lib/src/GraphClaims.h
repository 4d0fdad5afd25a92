#pragma once

#include <unordered_set>
#include <vector>

class CNode;
class CNodeChannel;
class CNodeChannelSet;
class CNodeConnection;
class CNodeGraph;
class KIVIStream;
class KIVLinkedList;
class KIVObject;

/// What a graph takes over from the stream it is read from. A file can name any object anywhere,
/// so nothing is followed before it has been claimed: what can be claimed has been read to its end.
/// A connection may be incomplete: with no channel at one end it stands on the other's list alone.
class GraphClaims {
public:
    GraphClaims(KIVIStream& stream, CNodeGraph* graph) : stream(stream), graph(graph) {}

    /// False, and an error of the stream, if nodes, channels and connections do not fit together.
    /// What was claimed by then is deleted.
    bool claim(const KIVLinkedList& listed, const CNode* root);

private:
    bool claim_nodes(const KIVLinkedList& listed);
    bool is_sound(const CNode& node) const;
    bool is_known(const KIVObject* node) const { return !node || known.contains(node); }
    bool are_known(const KIVLinkedList* named) const;
    bool claim_outgoing(const CNode& node);
    bool claim_connections(const CNodeChannel& output);
    const CNodeConnection* claim_connection(KIVObject* object);
    bool meet_incoming(const CNode& node);
    bool meet_connections(const CNodeChannel& input);
    const CNodeConnection* meet_connection(KIVObject* object);
    void delete_claimed();

    KIVIStream& stream;
    CNodeGraph* graph;
    std::vector<CNode*> nodes;
    std::unordered_set<const KIVObject*> known;    // the nodes
    std::unordered_set<const KIVObject*> half_met; // those still to be seen at their input
    std::vector<CNodeConnection*> connections;
};
