#pragma once

#include "kivlib/hdr/KIVObject.h"
#include "kivlib/hdr/KIVString.h"

#include <memory>
#include <vector>

/// One change, which can be taken back and made again.
class ChangeEvt : public KIVObject {
public:
    virtual void undo() = 0;
    virtual void redo() = 0;
};

/// The changes of a session as steps that a user undoes one by one.
class ChangeRecorder : public KIVObject {
public:
    /// Takes the change over, as part of the open step.
    void add(gsl::owner<ChangeEvt*> change);

    /// Closes the open step under `label`, which may be null. A step without changes is none.
    void end(const char* label);

    /// False if there is nothing to undo. An open step is closed first.
    bool undo();
    bool redo();

    int inq_undo_count() const { return static_cast<int>(done.size()); }

    /// Of the step that `undo` would take back; empty without one.
    KIVString inq_undo_label() const { return done.empty() ? KIVString() : done.back().label; }

private:
    struct Step {
        KIVString label;
        std::vector<std::unique_ptr<ChangeEvt>> changes;
    };

    Step open;
    std::vector<Step> done;
    std::vector<Step> undone;
};
