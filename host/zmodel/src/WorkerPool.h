// SPDX-License-Identifier: MIT
// Threads for passes over large meshes.
#pragma once

#include <functional>

/// Calls `work(begin, end)` for pieces that cover [0, count) once, on all cores, and returns when all are done. Pieces
/// are multiples of `grain` but the last; fewer than two grains run here and now. The results of `work` must not depend
/// on how the range is cut. The threads are started when first needed and live as long as the process. A call while
/// another thread's is running does its work alone.
void ParallelFor(int count, int grain, const std::function<void(int begin, int end)>& work);
