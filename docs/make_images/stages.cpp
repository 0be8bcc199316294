// Makes a request step by step and stops in between for a picture.
#include "stages.h"

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <vector>

#include "engine/hybrid.h"
#include "engine/model_mode.h"
#include "engine/segmentation_request.h"
#include "engine/terminal_weights.h"
#include "history/marker.h"
#include "interface/engine_state.h"
#include "painting.h"
#include "segmentation_core.h"
#include "support/image.h"

namespace {

constexpr double kClearPreference = 6.0;  // log-likelihood ratio painted in full colour

class Painter {
  public:
    Painter(cv::Mat photo, const cv::Rect& box, const cv::Rect& detail, std::string folder)
        : m_photo(std::move(photo)), m_box(box), m_detail(detail), m_folder(std::move(folder)) {}

    cv::Mat run() {
        prepare();
        paintLinks();

        SegmentationRequest request(*pHybrid);
        request.begin();
        write("labels", paintLabels(working(), labels(VORNSEMarker::m_labelImage)));
        cutRepeatedly(request);
        return finish(request);
    }

  private:
    void prepare() {
        cv::Mat words;
        cv::cvtColor(m_photo, words, cv::COLOR_BGR2BGRA);
        setSourceImage(words.cols, words.rows, words.ptr<std::uint32_t>());
        initSegmentationEngine(0);
        if (pHybrid == nullptr || g_imageResizeFactor == 1.0F) {
            throw std::runtime_error("the photograph is too small to show every stage");
        }
        std::vector<int> loop = {m_box.x, m_box.y,          m_box.br().x - 1,
                                 m_box.y, m_box.br().x - 1, m_box.br().y - 1,
                                 m_box.x, m_box.br().y - 1};
        setCurrentMarkerVector(static_cast<int>(loop.size()), loop.data());
        VORNSEMarker::currentStroke.m_strokeType = SEGCORE_LOOP_ADD;
        const ImagePtr markers = createImage(m_photo.cols, m_photo.rows, 1);
        cv::Mat(cv::cvarrToMat(markers.get())) = cv::Scalar(SEGCORE_MARK_NONE);
        cv::cvarrToMat(markers.get())(m_box) = cv::Scalar(SEGCORE_MARK_CANDIDATE);
        pHybrid->labelMarks(markers.get());
    }

    void cutRepeatedly(SegmentationRequest& request) {
        std::vector<cv::Mat> trials;
        for (int pass = 0; pass < SegmentationRequest::kPasses; ++pass) {
            request.prepareModels(pass);
            request.buildGraph(pass);
            if (pass == 0) {
                write("preference", paintSigned(preference(), kClearPreference));
            }
            request.cut(pass);
            if (pass < kTrials) {
                trials.push_back(paintCutOut(crop(), objectOf(labels(pHybrid->m_cropLabel))));
            }
        }
        write("trials", sideBySide(trials));
        write("cut", paintLabels(crop(), labels(pHybrid->m_cropLabel)));
    }

    cv::Mat finish(SegmentationRequest& request) {
        request.choose();
        const ImagePtr result = request.upscale(request.workingMask());
        request.finish(result.get());
        const cv::Mat mask = cv::cvarrToMat(result.get()).clone();
        const cv::Mat object = objectOf(labels(VORNSEMarker::m_labelImage));
        cv::Mat blocky;
        cv::resize(object, blocky, m_photo.size(), 0, 0, cv::INTER_NEAREST);
        pHybrid->clearMemory();
        paintBand(blocky, bandOf(object), mask);
        return mask;
    }

    // Detail of the outline: the working mask enlarged, the band that is cut again, and the result.
    void paintBand(const cv::Mat& blocky, const cv::Mat& band, const cv::Mat& mask) {
        constexpr int kZoom = 4;
        cv::Mat codes;
        cv::resize(band, codes, m_photo.size(), 0, 0, cv::INTER_NEAREST);
        write("band", sideBySide({enlarged(paintCutOut(m_photo, blocky)(m_detail), kZoom),
                                  enlarged(paintLabels(m_photo, codes)(m_detail), kZoom),
                                  enlarged(paintCutOut(m_photo, mask)(m_detail), kZoom)}));
    }

    // The band along a working mask's outline in label codes: free pixels are cut again, between
    // the fixed rings; the probable ones lie outside the band.
    static cv::Mat bandOf(const cv::Mat& object) {
        const auto grown = [&](int steps) {
            cv::Mat result;
            cv::dilate(object, result, cv::Mat(), cv::Point(-1, -1), steps);
            return result;
        };
        const auto shrunk = [&](int steps) {
            cv::Mat result;
            cv::erode(object, result, cv::Mat(), cv::Point(-1, -1), steps);
            return result;
        };
        cv::Mat codes(object.size(), CV_8U, cv::Scalar(label::kProbableBackground));
        codes.setTo(label::kBackground, grown(3));
        codes.setTo(label::kFree, grown(1));
        codes.setTo(label::kObject, shrunk(1));
        codes.setTo(label::kProbableObject, shrunk(3));
        return codes;
    }

    void paintLinks() const {
        cv::Mat mean(pHybrid->m_height, pHybrid->m_width, CV_32F, cv::Scalar(1.0));
        for (int y = 1; y < mean.rows; ++y) {
            for (int x = 0; x < mean.cols; ++x) {
                const float* links = pHybrid->m_nLinks + 4 * (y * mean.cols + x);
                mean.at<float>(y, x) = x > 0 ? (links[0] + links[2]) / 2.0F : links[2];
            }
        }
        write("links", paintGrey(mean, 0.0, 1.0));
    }

    // Log-likelihood of the object minus that of the background.
    static cv::Mat preference() {
        const IplImage* image = pHybrid->m_cropImage;
        cv::Mat values(image->height, image->width, CV_32F);
        values.forEach<float>([&](float& value, const int* at) {
            const TerminalWeights weights =
                modelWeights(pHybrid->m_fgModel, pHybrid->m_bgModel,
                             sampleAt(rowOf(image, at[0]), nullptr, nullptr, at[1]));
            value = static_cast<float>(weights.source - weights.sink);
        });
        return values;
    }

    static cv::Mat labels(const IplImage* image) { return cv::cvarrToMat(image); }
    static cv::Mat working() { return cv::cvarrToMat(VORNSEMarker::m_srcImage); }
    static cv::Mat crop() { return cv::cvarrToMat(pHybrid->m_cropImage); }
    static cv::Mat objectOf(const cv::Mat& labels) {
        return (labels == label::kObject) | (labels == label::kProbableObject);
    }
    void write(const std::string& name, const cv::Mat& picture) const {
        writePicture(m_folder, name, picture);
    }

    cv::Mat m_photo;
    cv::Rect m_box;
    cv::Rect m_detail;
    std::string m_folder;
};

}  // namespace

cv::Mat paintStages(const cv::Mat& photo, const cv::Rect& box, const cv::Rect& detail,
                    const std::string& folder) {
    const cv::Mat mask = Painter(photo, box, detail, folder).run();
    deinitSegmentation();
    return mask;
}
