// Variance splitting, initialisation by the imaging library's k-means, and the initialisation that
// shares out unlabelled pixels by their likelihood.
#include "colour/alternative_init.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "colour/model_init.h"
#include "history/marker.h"
#include "support/log.h"

int g_maxVarDir = 0;

namespace {

constexpr int kIterations = 10;
// The best of a few seedings is kept: one alone may put two centres into one cluster.
constexpr int kAttempts = 3;
constexpr std::size_t kThirds = 3;

double channelOf(pixelVal x, int channel) {
    return channel == 0 ? x.ch0 : (channel == 1 ? x.ch1 : x.ch2);
}

struct Partition {
    std::vector<pixelVal> samples;
    double error;

    explicit Partition(std::vector<pixelVal> values)
        : samples(std::move(values)), error(findSSE(samples)) {}
    double errorPerSample() const {
        return samples.empty() ? 0.0 : error / static_cast<double>(samples.size());
    }
};

// Seeds the imaging library's generator, which is shared with the host, for as long as it lives.
class SeededGenerator {
  public:
    explicit SeededGenerator(std::uint64_t seed) : m_before(cv::theRNG()) {
        cv::theRNG() = cv::RNG(seed);
    }
    ~SeededGenerator() { cv::theRNG() = m_before; }
    SeededGenerator(const SeededGenerator&) = delete;
    SeededGenerator& operator=(const SeededGenerator&) = delete;

  private:
    cv::RNG m_before;
};

constexpr int kScalarChannels = 4;  // what the imaging library reads of a pixel

bool fitsTogether(const IplImage* image, const IplImage* labels) {
    return image != nullptr && image->nChannels >= kChannels &&
           image->nChannels <= kScalarChannels && labels->nChannels == 1 &&
           labels->width == image->width && labels->height == image->height;
}

pixelVal sampleOf(const CvScalar& value) {
    return {value.val[0], value.val[1], value.val[2]};
}

std::vector<vec4> sortByDensity(const std::vector<pixelVal>& samples,
                                const VORNSEColorModel& model) {
    std::vector<vec4> scored;
    scored.reserve(samples.size());
    for (const pixelVal& sample : samples) {
        const double density = model.GMMProb(sample);
        scored.push_back({sample.ch0, sample.ch1, sample.ch2, std::isnan(density) ? 0.0 : density});
    }
    std::sort(scored.begin(), scored.end(), order);
    return scored;
}

}  // namespace

bool order(vec4 a, vec4 b) {
    return !(a.score >= b.score);
}

double distSq(pixelVal a, pixelVal b) {
    const double d0 = a.ch0 - b.ch0;
    const double d1 = a.ch1 - b.ch1;
    const double d2 = a.ch2 - b.ch2;
    return d0 * d0 + d1 * d1 + d2 * d2;
}

pixelVal findMean(const std::vector<pixelVal>& samples) {
    pixelVal mean = {0.0, 0.0, 0.0};
    if (samples.empty()) {
        return mean;
    }
    for (const pixelVal& sample : samples) {
        mean.ch0 += sample.ch0;
        mean.ch1 += sample.ch1;
        mean.ch2 += sample.ch2;
    }
    const auto count = static_cast<double>(samples.size());
    return {mean.ch0 / count, mean.ch1 / count, mean.ch2 / count};
}

double findSSE(const std::vector<pixelVal>& samples) {
    const pixelVal mean = findMean(samples);
    double sum = 0.0;
    for (const pixelVal& sample : samples) {
        sum += distSq(sample, mean);
    }
    return sum;
}

void varPartition(const std::vector<pixelVal>& in, std::vector<pixelVal>& low,
                  std::vector<pixelVal>& high) {
    g_maxVarDir = 0;
    if (in.empty()) {
        return;
    }
    const auto count = static_cast<double>(in.size());
    double largest = -1.0;
    double threshold = 0.0;
    for (int c = 0; c < kChannels; ++c) {
        double sum = 0.0;
        double squares = 0.0;
        for (const pixelVal& sample : in) {
            const double value = channelOf(sample, c);
            sum += value;
            squares += value * value;
        }
        const double mean = sum / count;
        const double variance = squares / count - mean * mean;
        if (variance > largest) {
            largest = variance;
            threshold = mean;
            g_maxVarDir = c;
        }
    }
    for (const pixelVal& sample : in) {
        (channelOf(sample, g_maxVarDir) >= threshold ? high : low).push_back(sample);
    }
    for (std::vector<pixelVal>* half : {&low, &high}) {
        if (half->empty()) {
            half->push_back(in.front());
        }
    }
}

void varParInit(const std::vector<pixelVal>& samples, double** centres) {
    std::vector<Partition> partitions;
    partitions.emplace_back(samples);
    while (partitions.size() < kComponents) {
        const auto widest = std::max_element(partitions.begin(), partitions.end(),
                                             [](const Partition& a, const Partition& b) {
                                                 return a.errorPerSample() < b.errorPerSample();
                                             });
        std::vector<pixelVal> low;
        std::vector<pixelVal> high;
        varPartition(widest->samples, low, high);
        partitions.erase(widest);
        partitions.emplace_back(std::move(low));
        partitions.emplace_back(std::move(high));
    }
    for (std::size_t k = 0; k < partitions.size(); ++k) {
        const pixelVal mean = findMean(partitions[k].samples);
        centres[k][0] = mean.ch0;
        centres[k][1] = mean.ch1;
        centres[k][2] = mean.ch2;
    }
}

void initModelWithKmeans(const std::vector<pixelVal>& samples, VORNSEColorModel& model) {
    if (samples.size() < kComponents) {
        return;
    }
    std::vector<cv::Vec<float, kChannels>> points;
    points.reserve(samples.size());
    for (const pixelVal& sample : samples) {
        points.emplace_back(static_cast<float>(sample.ch0), static_cast<float>(sample.ch1),
                            static_cast<float>(sample.ch2));
    }
    std::vector<int> labels;
    const SeededGenerator seeded(samples.size());
    cv::kmeans(points, kComponents, labels,
               cv::TermCriteria(cv::TermCriteria::COUNT, kIterations, 0.0), kAttempts,
               cv::KMEANS_PP_CENTERS);
    estimateComponents(ClusterInfo(labels.data(), samples.data(), samples.size()), samples.size(),
                       model);
}

void initModelWithKmeans(const std::vector<pixelVal>& samplesA,
                         const std::vector<pixelVal>& samplesB, VORNSEColorModel& modelA,
                         VORNSEColorModel& modelB) {
    initModelWithKmeans(samplesA, modelA);
    initModelWithKmeans(samplesB, modelB);
}

void initThirdInitalization(const IplImage* image, const IplImage* labels, VORNSEColorModel& first,
                            VORNSEColorModel& second) {
    std::vector<pixelVal> unlabelled;
    std::vector<pixelVal> background;
    if (labels != nullptr) {
        if (!fitsTogether(image, labels)) {
            SEGCORE_LOG_ERROR("initThirdInitalization: image and labels do not fit together");
            return;
        }
        for (int y = 0; y < image->height; ++y) {
            for (int x = 0; x < image->width; ++x) {
                const auto code = static_cast<int>(cvGet2D(labels, y, x).val[0]);
                (label::isBackground(code) ? background : unlabelled)
                    .push_back(sampleOf(cvGet2D(image, y, x)));
            }
        }
    }
    VORNSEColorModel backgroundModel;
    initModelWithKmeans(background, backgroundModel);
    backgroundModel.setInverseCovariance();

    const std::vector<vec4> scored = sortByDensity(unlabelled, backgroundModel);
    const std::size_t third = scored.size() / kThirds;
    std::vector<pixelVal> object;
    for (std::size_t i = 0; i < third; ++i) {
        const vec4& least = scored[i];
        const vec4& best = scored[scored.size() - 1 - i];
        object.push_back({least.ch0, least.ch1, least.ch2});
        background.push_back({best.ch0, best.ch1, best.ch2});
    }
    initModelWithKmeansVORN(object, first);
    initModelWithKmeansVORN(background, second);
}
