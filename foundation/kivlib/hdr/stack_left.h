#pragma once

/// Whether so little is left of the calling thread's stack that nothing should nest deeper.
bool is_stack_low();
