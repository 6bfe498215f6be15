// PNG through libpng's simplified interface. A colour 0xAARRGGBB lies in memory (little-endian) as
// the bytes B, G, R, A, which is libpng's BGRA format.
#include "testutil/thPng.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>

namespace thTest {

void writePng(const std::string& path, const int32_t* argb, int32_t width, int32_t height) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(height);
  image.format = PNG_FORMAT_BGRA;
  const int ok = png_image_write_to_file(&image, path.c_str(), 0, argb, 0, nullptr);
  EXPECT_NE(ok, 0) << "libpng could not write " << path << ": " << image.message;
  png_image_free(&image);
}

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
