// Reading and writing EMB result files against bare stdio reads and writes of the same bytes, in
// the same run.
//
// Writes a model of 1,000,000 quadrilaterals with 20 layers (about 10 million cells) through the
// library's EMB writer into /tmp, a few timesteps of one 3-D item ("temp", one value per cell) and
// one 2-D item ("elev", one value per element), and times
//   - writing one timestep (writeItemData of each item) against one fwrite of each item's bytes
//     to a file of its own (target: ratio <= 1.25);
//   - readLayer (float32 form) of the top cells (layer 999) and of the surface layer (nol-1)
//     against a bare read of that timestep's block of the 3-D item: fopen, fseeko, one fread of
//     all its cells, fclose (target: ratio <= 1.5);
//   - readItemData of one timestep of the 3-D item against the same bare read (target: <= 1.1).
// The bare reads find the block where the library says it is (headerLen, getItemOffset).
// Page cache: the whole file is read once before the reads are timed, so that both sides read
// warm pages and neither pays for the disk that the other has warmed; writes go to the page cache
// on both sides, with no sync. Each measurement is the best of several rounds, baseline and
// library taking turns, and each round reads another timestep than the one before.
// Prints a line per measurement; asserts nothing. The files are removed at the end.

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "benchModel.h"
#include "resultfile/thResultFile.h"

using namespace thalmod;
using bench::best;
using bench::buildModel;
using bench::seconds;

namespace {

using bench::report;

[[noreturn]] void die(const std::string& what) {
  std::perror(what.c_str());
  std::exit(1);
}

// The values of timestep t, different from one timestep to the next.
void fill(std::vector<float>& temp, std::vector<float>& elev, int t) {
  for (size_t c = 0; c < temp.size(); ++c) temp[c] = 10.0f + 0.001f * static_cast<float>(c % 5000) + t;
  for (size_t e = 0; e < elev.size(); ++e) elev[e] = 0.01f * static_cast<float>(e % 300) - t;
}

// Writes the run, timing each timestep against bare fwrites of the same bytes.
void writeRun(const std::string& fn, const std::string& bareFn, int n, int nt) {
  thResultFile w(fn, EMB);
  double tb = seconds([&] { buildModel(w.mInfo, n); });
  const int32_t cells = w.mInfo.cells, noe = w.mInfo.mesh2d.noe;
  std::printf("model: %d elements, %d nodes, %d layers, %d cells (set up in %.2f s)\n", noe,
              w.mInfo.mesh2d.non, w.mInfo.nol, cells, tb);
  w.mInfo.nt = nt;
  w.addItem("temp", cells);
  w.addItem("elev", noe);
  w.writeHeader();
  FILE* bare = std::fopen(bareFn.c_str(), "wb");
  if (!bare) die(bareFn);
  std::vector<float> temp(cells), elev(noe);
  std::pair<double, double> step{1e30, 1e30};
  for (int t = 0; t < nt; ++t) {
    fill(temp, elev, t);
    step.second = std::min(step.second, seconds([&] {
                             std::fwrite(temp.data(), 4, temp.size(), bare);
                             std::fwrite(elev.data(), 4, elev.size(), bare);
                           }));
    step.first = std::min(step.first, seconds([&] {
                            w.writeItemData(temp.data(), cells);
                            w.writeItemData(elev.data(), noe);
                          }));
  }
  w.closeFile(nt);
  std::fclose(bare);
  std::printf("written: %d timesteps to %s\n", nt, fn.c_str());
  report("write one timestep (2 items)", step, 1.25, "bare stdio");
}

// Reads the whole file once, so that every read that follows finds its pages in memory.
void warm(const std::string& fn) {
  FILE* f = std::fopen(fn.c_str(), "rb");
  if (!f) die(fn);
  std::vector<char> buf(1 << 24);
  size_t total = 0, got = 0;
  while ((got = std::fread(buf.data(), 1, buf.size(), f)) > 0) total += got;
  std::fclose(f);
  std::printf("file: %.1f MB, read once before timing\n", static_cast<double>(total) / 1e6);
}

void timeReads(const std::string& fn, int nt) {
  warm(fn);
  thResultFile rf(fn, EMB);
  const int32_t cells = rf.mInfo.cells, noe = rf.mInfo.mesh2d.noe, nol = rf.mInfo.nol;
  const int64_t block = rf.getItemOffset(0),
                stepLen = rf.getItemOffset(static_cast<int32_t>(rf.itemNameVec.size()));
  std::vector<float> all(cells), layer(noe);
  int t = 0;
  // One timestep's block of the 3-D item, as a program of its own would read it.
  auto bareRead = [&] {
    const int64_t pos = rf.headerLen + 4 * (block + (t++ % nt) * stepLen);
    FILE* f = std::fopen(fn.c_str(), "rb");
    if (!f || fseeko(f, pos, SEEK_SET) != 0 || std::fread(all.data(), 4, all.size(), f) != all.size())
      die(fn);
    std::fclose(f);
  };
  for (int32_t l : {999, nol - 1}) {
    auto lay = best(
        8,
        [&] {
          float* p = layer.data();
          rf.readLayer(0, t++ % nt, l, &p);
        },
        bareRead);
    report(l == 999 ? "readLayer, top cells (999)" : "readLayer, surface layer (nol-1)", lay, 1.5,
           "bare stdio");
  }
  auto item = best(
      8, [&] { rf.readItemData(0, t++ % nt, all.data()); }, bareRead);
  report("readItemData, one timestep of the 3-D item", item, 1.1, "bare stdio");
}

}  // namespace

int main() {
  const int n = 1000, nt = 6;
  const std::string fn = "/tmp/bench_resultfile_emb_" + std::to_string(getpid()) + ".emb";
  const std::string bareFn = "/tmp/bench_resultfile_emb_" + std::to_string(getpid()) + ".bin";
  int status = 0;
  try {
    writeRun(fn, bareFn, n, nt);
    std::remove(bareFn.c_str());
    timeReads(fn, nt);
  } catch (const VCppLib::VException& e) {
    std::fprintf(stderr, "%s\n", e.message.c_str());
    status = 1;
  }
  std::remove(bareFn.c_str());
  std::remove(fn.c_str());
  return status;
}
