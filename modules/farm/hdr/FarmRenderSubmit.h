#pragma once

#include "batch/hdr/BatchRenderSubmit.h"

/// Hands renders to the farm. The options are those of CMontaray's command line, with `-o` among
/// them and without a range: the selected frames are rendered, or those of the key range with
/// `-key_range`. Quotes keep words together as in a shell; nothing is expanded.
class FarmRenderSubmit : public BatchRenderSubmit {
    KIV_STORED_ABSTRACT(FarmRenderSubmit, BatchRenderSubmit);

public:
    /// True if all frames are there or on their way afterwards. What was done is told on `coutp`,
    /// why nothing could be on `cerrp`.
    bool submit_render_job(const KIVString& options, const BatchSceneInfo& info) override;
};
