#include "pictures/files/vips_library.h"

#include "pictures/picture_error.h"

namespace {

// Those that a photograph may come in, all kept up by people who fuzz them. The library calls none of
// them untrusted; it has some thirty others, ImageMagick's hundreds of formats among them.
constexpr const char* kAllowedLoaders[] = {"VipsForeignLoadJpeg", "VipsForeignLoadPng",
                                           "VipsForeignLoadWebp", "VipsForeignLoadTiff",
                                           "VipsForeignLoadHeif"};

// The library prints its warnings; what becomes of a file says it in one line.
void ignore(const char* /*domain*/, GLogLevelFlags /*level*/, const char* /*text*/,
            void* /*data*/) {}

bool start() {
    g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK), ignore, nullptr);
    if (VIPS_INIT("segcore") != 0) {
        throw PictureError("pictures cannot be opened: " + takeVipsError() +
                           "; install libvips again");
    }
    vips_cache_set_max(0);  // it would keep whole pictures, and none is opened twice
    vips_block_untrusted_set(1);
    vips_operation_block_set("VipsForeignLoad", 1);
    for (const char* const loader : kAllowedLoaders) {
        vips_operation_block_set(loader, 0);
    }
    return true;
}

}  // namespace

void startVips() {
    static const bool started = start();
    static_cast<void>(started);
}

std::string takeVipsError() {
    const std::string text = vips_error_buffer();
    vips_error_clear();
    const std::string line = text.substr(0, text.find('\n'));
    const std::size_t origin = line.find(": ");
    return origin == std::string::npos ? line : line.substr(origin + 2);
}
