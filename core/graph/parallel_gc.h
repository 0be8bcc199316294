// ParallelGC: the maximum flow of one VORNSEGraph on several threads. The grid is cut into one
// block per thread, crossing edges are taken out, every block is solved by itself, and blocks are
// merged pairwise by putting their edges back and continuing the search.
#pragma once

#include "support/export.h"

class VORNSEGraph;

class SEGCORE_API ParallelGC {
  public:
    ParallelGC(VORNSEGraph* graph, int count);

    float maxFlow();

    VORNSEGraph* m_wholeGraph;
    int m_numBlocks;
};
