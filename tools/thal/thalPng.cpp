// PNG output through libpng: 8-bit RGB, no interlace, no time chunk, so that the same picture
// gives the same bytes on every run.
#include <png.h>

#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>

#include "thalArgs.h"
#include "thalImage.h"

namespace thTool {

Image::Image(int w, int h, uint32_t fill)
    : width(w), height(h), pixels(static_cast<size_t>(w) * static_cast<size_t>(h), fill) {}

void Image::fillRect(int x0, int y0, int w, int h, uint32_t colour) {
  for (int r = std::max(0, y0); r < std::min(height, y0 + h); ++r)
    for (int c = std::max(0, x0); c < std::min(width, x0 + w); ++c) at(c, r) = colour;
}

namespace {

struct FileCloser {
  void operator()(FILE* f) const { std::fclose(f); }
};

// libpng reports failures through longjmp; the jump lands in writeRows, which only holds
// plain data on its frame, so nothing with a destructor is skipped.
bool writeRows(FILE* f, const Image& img, const std::vector<png_bytep>& rows, std::string& err) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  if (!png) {
    err = "libpng could not start";
    return false;
  }
  png_infop info = png_create_info_struct(png);
  if (!info) {
    png_destroy_write_struct(&png, nullptr);
    err = "libpng could not start";
    return false;
  }
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    err = "libpng failed while writing";
    return false;
  }
  png_init_io(png, f);
  png_set_IHDR(png, info, static_cast<png_uint_32>(img.width), static_cast<png_uint_32>(img.height), 8,
               PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  png_write_image(png, const_cast<png_bytepp>(rows.data()));
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return true;
}

}  // namespace

void writePng(const std::string& path, const Image& img) {
  std::vector<png_byte> rgb(static_cast<size_t>(img.width) * img.height * 3);
  for (size_t i = 0; i < img.pixels.size(); ++i) {
    uint32_t c = img.pixels[i];
    rgb[3 * i] = static_cast<png_byte>((c >> 16) & 0xFF);
    rgb[3 * i + 1] = static_cast<png_byte>((c >> 8) & 0xFF);
    rgb[3 * i + 2] = static_cast<png_byte>(c & 0xFF);
  }
  std::vector<png_bytep> rows(img.height);
  for (int r = 0; r < img.height; ++r) rows[r] = rgb.data() + static_cast<size_t>(r) * img.width * 3;

  std::unique_ptr<FILE, FileCloser> f(std::fopen(path.c_str(), "wb"));
  if (!f) throw ToolError("Cannot write the picture '" + path + "': " + std::strerror(errno) + ".");
  std::string err;
  if (!writeRows(f.get(), img, rows, err))
    throw ToolError("Cannot write the picture '" + path + "': " + err + ".");
  if (std::fclose(f.release()) != 0)
    throw ToolError("Cannot write the picture '" + path + "': the file could not be closed.");
}

}  // namespace thTool
