#include "helpers/image-worker/RawReader.h"

#include <libraw/libraw.h>

namespace quillmere::images {

namespace {

void require(int status) {
    if (status != LIBRAW_SUCCESS)
        throw UnreadableImage();
}

} // namespace

std::optional<Image> readRaw(const std::string& path) {
    const auto processor = std::make_unique<LibRaw>(); // larger than a stack likes
    auto& parameters = processor->imgdata.params;
    parameters.use_camera_wb = 1;
    parameters.output_bps = 8;
    parameters.user_qual = 2;
    const int opened = processor->open_file(path.c_str());
    if (opened == LIBRAW_FILE_UNSUPPORTED)
        return std::nullopt;
    require(opened);
    requireSize(processor->imgdata.sizes.raw_width, processor->imgdata.sizes.raw_height);
    require(processor->unpack());
    require(processor->dcraw_process());
    int status = LIBRAW_SUCCESS;
    const std::shared_ptr<const libraw_processed_image_t> developed(
        processor->dcraw_make_mem_image(&status),
        [](libraw_processed_image_t* image) { LibRaw::dcraw_clear_mem(image); });
    require(status);
    if (!developed || developed->type != LIBRAW_IMAGE_BITMAP || developed->bits != 8)
        throw UnreadableImage();
    VipsImageRef pixels(vips_image_new_from_memory(developed->data, developed->data_size, developed->width,
                                                   developed->height, developed->colors, VIPS_FORMAT_UCHAR));
    if (!pixels)
        throw UnreadableImage();
    pixels->Type = developed->colors < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
    return Image{developed, std::move(pixels)};
}

} // namespace quillmere::images
