// PNG through libpng's simplified interface. A colour 0xAARRGGBB lies in memory (little-endian) as
// the bytes B, G, R, A, which is libpng's BGRA format.
#include "testutil/thPng.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>

namespace thTest {

std::vector<int32_t> readPng(const std::string& path, int32_t& width, int32_t& height) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  width = height = 0;
  if (!png_image_begin_read_from_file(&image, path.c_str())) {
    ADD_FAILURE() << "libpng could not open " << path << ": " << image.message;
    return {};
  }
  image.format = PNG_FORMAT_BGRA;
  std::vector<int32_t> pixels(static_cast<size_t>(image.width) * image.height);
  if (!png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr)) {
    ADD_FAILURE() << "libpng could not decode " << path << ": " << image.message;
    png_image_free(&image);
    return {};
  }
  width = static_cast<int32_t>(image.width);
  height = static_cast<int32_t>(image.height);
  png_image_free(&image);
  return pixels;
}

}  // namespace thTest
