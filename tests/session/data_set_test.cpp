#include "session/data_set.h"

#include <gtest/gtest.h>
#include <map>

#include "session/errors.h"

namespace {

// A folder in memory; every picture is one pixel of its name's length.
class Folder : public DataFolder {
  public:
    explicit Folder(std::map<std::string, std::string> files) : m_files(std::move(files)) {}

    std::vector<std::string> fileNames() const override {
        std::vector<std::string> names;
        for (const auto& [name, content] : m_files) {
            names.insert(names.begin(), name);
        }
        return names;
    }
    std::optional<std::string> text(const std::string& file) const override {
        return m_files.count(file) == 0 ? std::nullopt : std::optional(m_files.at(file));
    }
    cv::Mat colourPicture(const std::string& file) const override { return picture(file, CV_8UC3); }
    cv::Mat greyPicture(const std::string& file) const override { return picture(file, CV_8UC1); }

  private:
    cv::Mat picture(const std::string& file, int type) const {
        const auto length = static_cast<double>(file.size());
        return m_files.count(file) == 0 ? cv::Mat() : cv::Mat(1, 1, type, cv::Scalar::all(length));
    }

    std::map<std::string, std::string> m_files;
};

TEST(DataSet, FindsPhotographsAndWhatBelongsToThem) {
    const Folder folder({{"b.png", ""},
                         {"a.jpg", ""},
                         {"a.gt.png", ""},
                         {"a.s2.png", ""},
                         {"a.box.txt", "10 20\n30 50"},
                         {"a.lasso.txt", "1 2\n3 4\n5 6\n"},
                         {"c.png", ""},
                         {"c.box.txt", "1 2 3"},
                         {"c.lasso.txt", "1 2 three 4"},
                         {"README.md", ""}});
    const std::vector<DataPhoto> photos = photosIn(folder);
    ASSERT_EQ(photos.size(), 3U);
    EXPECT_EQ(photos[0].name(), "a");
    EXPECT_EQ(photos[1].name(), "b");
    EXPECT_EQ(photos[0].image().at<cv::Vec3b>(0, 0)[2], 5);  // a.jpg
    EXPECT_EQ(photos[0].truth().at<uchar>(0, 0), 8);
    EXPECT_EQ(photos[0].scribbles("s2").at<uchar>(0, 0), 8);
    EXPECT_TRUE(photos[0].scribbles("s1").empty());
    EXPECT_EQ(photos[0].box(), cv::Rect(10, 20, 20, 30));
    EXPECT_EQ(photos[0].lasso(), (std::vector<cv::Point>{{1, 2}, {3, 4}, {5, 6}}));
    EXPECT_TRUE(photos[1].box().empty());
    EXPECT_TRUE(photos[1].lasso().empty());
    EXPECT_THROW(photos[2].box(), UserError);
    EXPECT_THROW(photos[2].lasso(), UserError);
}

}  // namespace
