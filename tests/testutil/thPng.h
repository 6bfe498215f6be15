// A small PNG reader for checking painted bitmaps as a viewer would see them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace thTest {

// Decodes a PNG file into colours 0xAARRGGBB, top row first; width and height are set from the
// file. Fails the running test (and returns an empty array) if libpng cannot read it.
std::vector<int32_t> readPng(const std::string& path, int32_t& width, int32_t& height);

}  // namespace thTest
