#include "render/src/HeldFrame.h"

#include "compositor/imagelib/lib/hdr/CNodeRasterImage.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "imagelib/hdr/BitmapProvider.h"
#include "imagelib/hdr/MipMap.h"
#include "render/hdr/OutputRun.h"
#include "render/hdr/RenderScene.h"
#include "scene/hdr/KIVScene.h"

#include <algorithm>
#include <ctime>
#include <dlfcn.h>

namespace {
const void* find_library(const void* address)
{
    Dl_info info;
    return ::dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

/// Nodes of this library look at the frame number to read their columns and for nothing else.
bool is_node_of_ours(const CNode& node)
{
    static const void* const ours = find_library(&typeid(RenderScene));
    const std::type_info& type = typeid(node);
    return ours && find_library(&type) == ours;
}

bool is_at(const timespec& a, const timespec& b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

BitmapProvider& inq_provider(int bits)
{
    if (bits == 8)
        return *inq_bitmap_provider_8();
    return *inq_bitmap_provider_16();
}
} // namespace

FileState::FileState(const KIVString& path) : exists(::stat(path.c_str(), &facts) == 0) {}

FileState::FileState(const FileHandle& file) : exists(::fstat(file.inq_descriptor(), &facts) == 0)
{}

bool FileState::operator==(const FileState& other) const
{
    if (!exists || !other.exists)
        return exists == other.exists;
    return has_contents_of(other) && is_at(facts.st_ctim, other.facts.st_ctim);
}

bool FileState::has_contents_of(const FileState& other) const
{
    return exists && other.exists && facts.st_dev == other.facts.st_dev &&
           facts.st_ino == other.facts.st_ino && facts.st_size == other.facts.st_size &&
           is_at(facts.st_mtim, other.facts.st_mtim);
}

// The clock of a file system goes in steps, and within one a file may change without a trace.
bool FileState::is_settled() const
{
    constexpr std::time_t MARGIN = 2; // seconds
    return !exists || facts.st_mtim.tv_sec + MARGIN < std::time(nullptr);
}

HeldFrame::HeldFrame(KIVScene& scene, RenderScene& renderer, int bits, bool is_hopeless)
    : renderer(renderer), bits(bits), provider(inq_provider(bits)),
      is_provable(!is_hopeless && scene.inq_graph())
{
    if (!scene.inq_graph())
        return;
    const std::unique_ptr<KIVLinkedList> nodes(scene.inq_graph()->make_ordered_nodes_list());
    for (ReadOnlyIterator node(*nodes); node++;)
        take(*static_cast<CNode*>(node()));
}

void HeldFrame::take(CNode& node)
{
    if (!is_node_of_ours(node))
        is_provable = false;
    else if (std::strcmp(node.class_name(), CNodeRasterImage::inq_class_name_s()) == 0)
        images.push_back(static_cast<CNodeRasterImage*>(&node));
}

bool HeldFrame::is_same(int a, int b) const
{
    return is_provable && renderer.inq_is_frame_the_same(a, b);
}

void HeldFrame::will_render(int frame)
{
    rendered_from.clear();
    are_settled = true;
    for (const CNodeRasterImage* image : images)
        provider.forget_loss(image->inq_mipmap_id(frame, bits));
    if (!is_provable)
        return;
    for (const CNodeRasterImage* image : images) {
        rendered_from.emplace_back(provider.inq_file(image->inq_mipmap_id(frame, bits)));
        are_settled &= rendered_from.back().is_settled();
    }
}

bool HeldFrame::has_lost_images(int frame) const
{
    return std::ranges::any_of(images, [&](const CNodeRasterImage* image) {
        return !provider.inq_loss(image->inq_mipmap_id(frame, bits)).is_null();
    });
}

void HeldFrame::was_written(const FrameReport& report)
{
    held_frame = report.frame;
    held_from = rendered_from;
    was_settled = are_settled;
    file = report.file;
    unfinished = report.unfinished;
    file_state = FileState(unfinished.is_null() ? file : unfinished);
}

// The file may get its name at any moment.
FileHandle HeldFrame::open_file_for(int frame) const
{
    const bool serves =
        held_frame > 0 && was_settled && is_same(held_frame, frame) && rendered_from == held_from;
    if (!serves)
        return {};
    FileHandle handle = FileHandle::open_to_read(unfinished.c_str());
    if (!handle.is_open())
        handle = FileHandle::open_to_read(file.c_str());
    return FileState(handle).has_contents_of(file_state) ? std::move(handle) : FileHandle();
}

KIVStringList HeldFrame::find_unreadable_images(int frame) const
{
    KIVStringList found;
    for (const CNodeRasterImage* image : images) {
        const int id = image->inq_mipmap_id(frame, bits);
        if (id < 0 || image->inq_is_disabled())
            continue;
        if (const KIVString reason = explain_missing(id); !reason.is_null())
            found.add_to_end(image->inq_filename(frame) + ": " + reason, true);
    }
    return found;
}

/// Empty for a picture that is there and was there. To look at it now would not tell of the past.
KIVString HeldFrame::explain_missing(int id) const
{
    const KIVString loss = provider.inq_loss(id);
    if (!loss.is_null())
        return loss;
    const MipMap* picture = provider.lock(id);
    KIVString reason = picture ? KIVString() : KIVString("it is not known");
    if (picture && !picture->usable)
        reason = picture->inq_error_msg();
    provider.unlock(id);
    return reason;
}
