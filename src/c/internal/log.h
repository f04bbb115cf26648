#pragma once

namespace morva::c {

/// In a worker process, where a function of the caller would run among copies of what the caller
/// holds: has the log without it. Where records go to such a function, the worker is silent.
void leave_sink();

}  // namespace morva::c
