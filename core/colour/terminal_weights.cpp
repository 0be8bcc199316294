// Terminal weights from two colour models, one thread per block of the parallel solver. Densities
// are computed in single precision. Absent components need no test: their weight is zero.
//
// Every thread fills in a block view of the graph. The views share the nodes. Flow that
// passes straight from source to sink is counted by each view for itself, so that
// threads share no variable.
#include <opencv2/core/mat.hpp>

#include <cmath>

#include "colour/color_model.h"
#include "graph/parallel_gc.h"
#include "support/thread_batch.h"

namespace {

constexpr float kNone = 0.0F;

float density(const VORNSEColorModel& model, const std::uint8_t* pixel) {
    float sum = 0.0F;
    for (int k = 0; k < kComponents; ++k) {
        float d[kChannels];
        for (int c = 0; c < kChannels; ++c) {
            d[c] = static_cast<float>(pixel[c] - model.m_mean[k][c]);
        }
        double q = 0.0;
        for (int i = 0; i < kChannels; ++i) {
            for (int j = 0; j < kChannels; ++j) {
                q += static_cast<double>(d[i]) * model.m_inverseCovariance[k][kChannels * i + j] *
                     static_cast<double>(d[j]);
            }
        }
        const auto form = static_cast<double>(static_cast<float>(q));
        const double term =
            model.m_weight[k] * model.m_invSqrtDeterminant[k] * std::exp(-0.5 * form);
        sum = static_cast<float>(static_cast<double>(sum) + term);
    }
    return sum;
}

void computeBlock(void* argument) {
    const auto& task = *static_cast<GMMProbsThread*>(argument);
    task.solver->ComputeGMMProbs(task.row, task.col, task.image, task.labels, task.hardWeight,
                                 task.sinkCode, task.sourceCode, task.first, task.second,
                                 task.graph);
}

bool covers(const cv::Mat* matrix, int type, int width, int height) {
    return matrix != nullptr && matrix->type() == type && matrix->cols == width &&
           matrix->rows == height;
}

}  // namespace

void* ThreadComputeGMMProbs(void* argument) {
    computeBlock(argument);
    pthread_exit(nullptr);
}

void ParallelGC::ComputeGMMProbsParallely(cv::Mat* image, cv::Mat* labels, double hardWeight,
                                          int sinkCode, int sourceCode, VORNSEColorModel* first,
                                          VORNSEColorModel* second, VORNSEGraph* graph) {
    if (!covers(image, CV_8UC3, m_width, m_height) || !image->isContinuous() ||
        !covers(labels, CV_8UC1, m_width, m_height) || first == nullptr || second == nullptr ||
        graph == nullptr || graph->m_nodeCount < m_width * m_height) {
        SEGCORE_LOG_ERROR("ComputeGMMProbsParallely: images or graph do not fit");
        return;
    }
    std::vector<BlockViewPtr> views;
    std::vector<GMMProbsThread> tasks(static_cast<std::size_t>(m_numBlocks));
    for (int block = 0; block < m_numBlocks; ++block) {
        const int row = block / m_blocksX;
        const int col = block % m_blocksX;
        views.push_back(createBlockView(graph, row, col, m_blockWidth, m_blockHeight));
        views.back()->m_flow = 0.0F;
        tasks[static_cast<std::size_t>(block)] = {
            this,       block,    row,        col,   image,  labels,
            hardWeight, sinkCode, sourceCode, first, second, views.back().get()};
    }
    ThreadBatch threads(m_numBlocks);
    for (GMMProbsThread& task : tasks) {
        threads.start(ThreadComputeGMMProbs, computeBlock, &task);
    }
    threads.join();
    for (const BlockViewPtr& view : views) {
        graph->m_flow += view->m_flow;
    }
}

void ParallelGC::ComputeGMMProbs(int row, int col, cv::Mat* image, cv::Mat* labels,
                                 double hardWeight, int sinkCode, int sourceCode,
                                 VORNSEColorModel* first, VORNSEColorModel* second,
                                 VORNSEGraph* graph) {
    const auto hard = static_cast<float>(hardWeight);
    const int lastX = std::min((col + 1) * m_blockWidth, m_width) - 1;
    const int lastY = std::min((row + 1) * m_blockHeight, m_height) - 1;
    for (int y = row * m_blockHeight; y <= lastY; ++y) {
        const std::uint8_t* labelRow = labels->ptr<std::uint8_t>(y);
        for (int x = col * m_blockWidth; x <= lastX; ++x) {
            const int node = x + y * m_width;
            if (labelRow[x] == sourceCode) {
                graph->addtWeights(node, hard, kNone);
            } else if (labelRow[x] == sinkCode) {
                graph->addtWeights(node, kNone, hard);
            } else {
                const std::uint8_t* pixel =
                    image->data + static_cast<std::ptrdiff_t>(kChannels) * node;
                graph->addtWeights(node, -std::log(density(*second, pixel)),
                                   -std::log(density(*first, pixel)));
            }
        }
    }
}
