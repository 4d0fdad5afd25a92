#include "kivlib/hdr/ChangeRecorder.h"

void ChangeRecorder::add(gsl::owner<ChangeEvt*> change)
{
    open.changes.emplace_back(change);
    undone.clear();
}

void ChangeRecorder::end(const char* label)
{
    if (open.changes.empty())
        return;
    open.label = label;
    done.push_back(std::exchange(open, {}));
}

bool ChangeRecorder::undo()
{
    end(nullptr);
    if (done.empty())
        return false;
    Step step = std::move(done.back());
    done.pop_back();
    for (auto change = step.changes.rbegin(); change != step.changes.rend(); ++change)
        (*change)->undo();
    undone.push_back(std::move(step));
    return true;
}

bool ChangeRecorder::redo()
{
    if (undone.empty() || !open.changes.empty())
        return false;
    Step step = std::move(undone.back());
    undone.pop_back();
    for (auto& change : step.changes)
        change->redo();
    done.push_back(std::move(step));
    return true;
}
