#pragma once

#include "kivlib/hdr/KIVString.h"
#include "kivlib/hdr/StoredClass.h"

class BatchManager;
class BatchSceneInfo;

/// Hands renders of scenes to a batch service. The system has none of its own: a module brings one,
/// with a BatchRenderSubmitDescriptor.
class BatchRenderSubmit : public KIVObject {
    KIV_STORED_ABSTRACT(BatchRenderSubmit, KIVObject);

public:
    /// `options` are the submitter's own. False if the job was not taken.
    virtual bool submit_render_job(const KIVString& options, const BatchSceneInfo& info);

    /// That of the first descriptor that the class manager has, made at the first call and kept.
    /// Null if no module offers one; the next call then looks again.
    static BatchRenderSubmit* inq_batch_render_submit();

protected:
    static BatchManager* inq_batch_manager();

private:
    inline static BatchRenderSubmit* our_batch_render_submit = nullptr;
};
