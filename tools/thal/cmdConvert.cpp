// thal convert IN OUT: a result file rewritten in another format, NC or EMB by OUT's extension.
//
// The library does all of it: the source's model description is copied into a writer, which
// writes the header of the new format, and every item of every timestep is read from the source
// and handed to the writer in the order that it expects them, item after item, timestep after
// timestep. A logical EMB source that goes on in "^" files is read through to its end.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "support/VFiles.h"
#include "thalCommands.h"
#include "thalResult.h"

namespace thTool {

namespace {

namespace fs = std::filesystem;
using thalmod::thResultFile;

// A file's identity for comparing names: its canonical path, also for a file yet to be made.
std::string identity(const std::string& path) {
  std::error_code ec;
  fs::path p = fs::weakly_canonical(fs::absolute(path), ec);
  return ec ? path : p.string();
}

// The names of physical files 0..n-1 of a logical file, by the library's own naming; without n,
// those that exist.
std::vector<std::string> physicalFiles(thResultFile& rf, int32_t n = -1) {
  std::vector<std::string> names;
  for (rf.fileNo = 0; n < 0 ? VCppLib::fileExists(rf.getFileName()) : rf.fileNo < n; ++rf.fileNo)
    names.push_back(rf.getFileName());
  rf.fileNo = 0;
  return names;
}

// The format to write, from OUT's extension as the library reads extensions.
thalmod::fileFmtEnum targetFormat(const std::string& out) {
  int32_t format = -1;
  try {
    format = thalmod::str2fileFmtEnum(VCppLib::extPart(out));
  } catch (const VCppLib::VException&) {
  }
  if (format != thalmod::NC && format != thalmod::EMB)
    throw ToolError("Cannot write '" + out +
                    "': convert writes NC and EMB files, named by their extension .nc or .emb.");
  return static_cast<thalmod::fileFmtEnum>(format);
}

// The writer's physical files must not be the source's: neither OUT itself, nor a "^" file that
// it will write, nor an old "^" file of an earlier output that is about to go.
class InputGuard {
 public:
  InputGuard(thResultFile& src, const std::string& inName, const std::string& outName)
      : in(inName), out(outName) {
    for (const std::string& f : physicalFiles(src)) inputs.insert(identity(f));
    if (identity(out) == identity(in))
      throw ToolError("The output '" + out +
                      "' is the input file itself; give the converted file another name.");
    check({out});
  }
  void check(const std::vector<std::string>& names) const {
    for (const std::string& f : names)
      if (inputs.count(identity(f)))
        throw ToolError("Writing '" + out + "' would overwrite '" + f + "', a file of the input '" + in +
                        "'; give the converted file another name.");
  }

 private:
  std::string in, out;
  std::set<std::string> inputs;
};

// Removes the files of an earlier output of that name, since a file that exists is read by the
// writer's constructor and a "^" file left over would lengthen the new logical file.
void removeOldOutput(thResultFile& w, const InputGuard& guard) {
  const std::vector<std::string> old = physicalFiles(w);
  guard.check(old);
  for (const std::string& f : old) {
    std::error_code ec;
    fs::remove(f, ec);
    if (ec) throw ToolError("Cannot replace '" + f + "': " + ec.message() + ".");
  }
}

// The model description, mesh and all, and the items of the source, in the writer.
void describeOutput(thResultFile& src, thResultFile& w, int32_t steps) {
  std::unique_ptr<thalmod::thModelInfo> model(src.mInfo.clone());
  w.mInfo = *model;  // the copies share the arrays; the writer's is the last to hold them
  w.mInfo.nt = steps;
  for (size_t i = 0; i < src.itemNameVec.size(); ++i) w.addItem(src.itemNameVec[i], src.itemLengthVec[i]);
  if (w.format != thalmod::EMB) return;
  // Static items that the reader kept go along; the writer adds its own (mesh, depths, layers).
  for (thalmod::staticItem& s : src.staticItems) {
    if (s.typeName == "float")
      w.addStaticItem(s.name, reinterpret_cast<float*>(s.data), s.noValues);
    else if (s.typeName == "int")
      w.addStaticItem(s.name, reinterpret_cast<int32_t*>(s.data), s.noValues);
    else
      w.addStaticItem(s.name, reinterpret_cast<char*>(s.data), s.noBytes,
                      static_cast<int32_t>(w.staticItems.size()));
  }
}

// The library leaves the buffer as it was after a read that ends early. A last value that still
// holds this pattern, a NaN with a payload of our own, tells such a read apart.
const float unread = std::bit_cast<float>(uint32_t{0x7FC0FEEDu});

void copyTimesteps(thResultFile& src, thResultFile& w, int32_t steps) {
  const int32_t longest = *std::max_element(src.itemLengthVec.begin(), src.itemLengthVec.end());
  std::vector<float> buf(std::max<int32_t>(1, longest));
  for (int32_t t = 0; t < steps; ++t)
    for (int32_t i = 0; i < static_cast<int32_t>(src.itemNameVec.size()); ++i) {
      const int32_t len = src.itemLengthVec[i];
      const std::string what = "item '" + src.itemNameVec[i] + "' at timestep " + std::to_string(t);
      if (len > 0) buf[len - 1] = unread;
      int32_t rc = 0;
      try {
        rc = src.readItemData(i, t, buf.data());
      } catch (const VCppLib::VException& e) {
        readFailed(src, what, e.message);
      }
      if (rc != 0 || (len > 0 && std::bit_cast<uint32_t>(buf[len - 1]) == std::bit_cast<uint32_t>(unread)))
        readFailed(src, what, "the file ends before its values, or they cannot be read.");
      w.writeItemData(buf.data(), len);
    }
}

void convert(thResultFile& src, thResultFile& w, const InputGuard& guard, int32_t steps) {
  describeOutput(src, w, steps);
  w.writeHeader();
  // Only now is it known how many timesteps go into one physical file of the output.
  const int32_t perFile = w.timestepsPerFile > 0 ? w.timestepsPerFile : steps;
  guard.check(physicalFiles(w, perFile > 0 ? steps / perFile + 1 : 1));
  copyTimesteps(src, w, steps);
  // The count of the last physical file: what the writer has put into it.
  w.closeFile(w.writeTimestep);
}

}  // namespace

int cmdConvert(const Args& args) {
  args.expectPositional(2, "thal convert IN OUT");
  const std::string& in = args.positional[0];
  const std::string& out = args.positional[1];
  const thalmod::fileFmtEnum format = targetFormat(out);
  // Writing has no place in the facade: convert reads and writes through the library's own objects.
  auto src = openNativeResult(in);
  if (!src->mInfo.isInit || src->itemNameVec.empty())
    throw ToolError("'" + in +
                    "' holds no model run with items to convert; convert reads NC, EMB, RESTART and "
                    "DECOUPLED files.");
  const InputGuard guard(*src, in, out);
  const bool goesOn =
      src->format == thalmod::EMB || src->format == thalmod::RESTART || src->format == thalmod::DECOUPLED;
  const int32_t steps = goesOn ? src->getTotNoTimesteps() : src->mInfo.nt;  // "^" files included

  // Made on an empty name, so that the constructor reads nothing, and then named.
  auto w = std::make_unique<thResultFile>("", format);
  w->filename = out;
  removeOldOutput(*w, guard);
  // No half-written output is left behind.
  auto removeOutput = [&w] {
    std::vector<std::string> names = physicalFiles(*w, w->fileNo + 1);
    w.reset();  // closes the files first
    for (const std::string& f : names) {
      std::error_code ec;
      fs::remove(f, ec);
    }
  };
  try {
    convert(*src, *w, guard, steps);
  } catch (const VCppLib::VException& e) {  // the writer's own failures
    removeOutput();
    throw ToolError("Cannot write '" + out + "': " + e.message);
  } catch (...) {
    removeOutput();
    throw;
  }
  std::cout << "Wrote " << out << " (" << thalmod::fileFmtEnum2str(format) << "): " << src->itemNameVec.size()
            << " items, " << timeAxisText(steps, src->mInfo.ts2StrDT(0), src->mInfo.ts2StrDT(steps - 1))
            << ", " << src->mInfo.mesh2d.noe << " elements, " << src->mInfo.nol << " layers.\n";
  if (format == thalmod::EMB && src->format == thalmod::NC)
    std::cout << "EMB holds coordinates, depths and layer thicknesses as float32: those of '" << in
              << "' are rounded to float32 in it.\n";
  return 0;
}

}  // namespace thTool
