#pragma once

#include "frontend/CMontaray/RunListener.h"

/// In a word, for programs.
const char* inq_outcome_name(FrameReport::Outcome outcome);

/// Why there is no file of the frame, for people; empty if all is well.
std::string inq_failure(const FrameEvent& event);
