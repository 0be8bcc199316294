#include "graph/parallel_gc.h"

#include "graph/graph.h"

ParallelGC::ParallelGC(VORNSEGraph* graph, int count) : m_wholeGraph(graph), m_numBlocks(count) {}

float ParallelGC::maxFlow() {
    m_wholeGraph->maxflowInit();
    m_wholeGraph->maxFlowSerialCall();
    return 0.0F;
}
