#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "trajectory/archive_file.h"

namespace {

using namespace pathstat;

constexpr int atoms = 10'000;
constexpr int frames = 200;

/// A run in a crystal, with line ends or as records, that goes when the program ends.
class Run {
 public:
  explicit Run(ArchiveForm form)
      : path_(std::filesystem::temp_directory_path() / ("bench_" + std::to_string(::getpid()) + ".arc")), form_(form) {
    file_ = std::fopen(path_.c_str(), "wb");
    line("a run");
    line("PBC=ON");
    for (int frame = 0; frame < frames; ++frame) {
      line("%-64s%16.6f", "a frame", -0.5 * frame);
      line("!DATE");
      line("PBC%10.4f%10.4f%10.4f%10.4f%10.4f%10.4f", 50., 50., 50., 90., 90., 90.);
      for (int k = 0; k < atoms; ++k) {
        const double x = 0.005 * ((k * 7919 + frame) % atoms);
        line("%-5s%15.9f%15.9f%15.9f %-4s %-7d%-7s%-2s %6.3f", "Ar", x, 50 - x / 3, x / 7, "RES", k % 1000, "ar", "Ar",
             0.25);
      }
      line("end");
      line("end");
    }
    std::fclose(file_);
  }
  ~Run() { std::filesystem::remove(path_); }
  Run(const Run&) = delete;

  const std::string& path() const { return path_; }
  double bytes() const { return static_cast<double>(std::filesystem::file_size(path_)); }

 private:
  template <class... Values>
  void line(const char* format, Values... values) {
    std::array<char, 100> text;
    const int length = std::snprintf(text.data(), text.size(), format, values...);
    std::fwrite(text.data(), 1, static_cast<std::size_t>(length), file_);
    if (form_ == ArchiveForm::text) std::fputc('\n', file_);
    for (int k = length; form_ == ArchiveForm::records && k < 80; ++k) std::fputc(' ', file_);
  }

  std::string path_;
  ArchiveForm form_;
  std::FILE* file_ = nullptr;
};

/// An archive that is open for reading.
class Reader {
 public:
  explicit Reader(const std::string& path) : descriptor_(::open(path.c_str(), O_RDONLY)) {
    std::int32_t status = 0;
    file_ = ArchiveFile(descriptor_, status);
  }
  ~Reader() { ::close(descriptor_); }
  Reader(const Reader&) = delete;

  bool read(std::int32_t frame) {
    std::int32_t status = 0;
    file_.read(frame, values_, xyz_, charges_, status);
    benchmark::DoNotOptimize(xyz_.data());
    return status == 0;
  }

 private:
  int descriptor_;
  ArchiveFile file_;
  ArchiveFrame values_;
  std::vector<double> xyz_ = std::vector<double>(3 * atoms), charges_ = std::vector<double>(atoms);
};

/// The plain way: the same lines and numbers through formatted input.
void read_with_fscanf(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "r");
  std::array<char, 100> line, word;
  std::vector<double> xyz(3 * atoms), charges(atoms);
  for (int k = 0; k < 2; ++k) std::fgets(line.data(), line.size(), file);
  while (std::fgets(line.data(), line.size(), file) != nullptr) {
    std::fgets(line.data(), line.size(), file);
    std::fgets(line.data(), line.size(), file);
    for (std::size_t k = 0; k < atoms; ++k) {
      double* x = &xyz[3 * k];
      if (std::fscanf(file, "%99s %lf %lf %lf %*s %*s %*s %*s %lf", word.data(), x, x + 1, x + 2, &charges[k]) != 5) {
        std::abort();
      }
    }
    for (int k = 0; k < 3; ++k) std::fgets(line.data(), line.size(), file);  // the rest of the last line, end, end
    benchmark::DoNotOptimize(xyz.data());
  }
  std::fclose(file);
}

template <class Work>
double seconds(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Every number of every frame, in the order of the file.
void archive_frames(benchmark::State& state, ArchiveForm form) {
  const Run run(form);
  double own = 0, plain = 0;
  for (auto _ : state) {
    const double time = seconds([&] {
      Reader reader(run.path());
      for (std::int32_t frame = 1; reader.read(frame); ++frame) continue;
    });
    state.SetIterationTime(time);
    own += time;
    if (form == ArchiveForm::text) plain += seconds([&] { read_with_fscanf(run.path()); });
  }
  if (form == ArchiveForm::text) state.counters["of_fscanf_speed"] = plain / own;
  state.SetBytesProcessed(static_cast<std::int64_t>(run.bytes() * static_cast<double>(state.iterations())));
}
BENCHMARK_CAPTURE(archive_frames, with_line_ends, ArchiveForm::text)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(archive_frames, as_records, ArchiveForm::records)->UseManualTime()->Unit(benchmark::kMillisecond);

/// From the last frame to the first, in a file whose frames have been passed once, against the way forwards.
void archive_backwards(benchmark::State& state) {
  const Run run(ArchiveForm::text);
  double backwards = 0, forwards = 0;
  for (auto _ : state) {
    Reader reader(run.path());
    forwards += seconds([&] {
      for (std::int32_t frame = 1; frame <= frames; ++frame) reader.read(frame);
    });
    const double time = seconds([&] {
      for (std::int32_t frame = frames; frame >= 1; --frame) reader.read(frame);
    });
    state.SetIterationTime(time);
    backwards += time;
  }
  state.counters["of_time_forwards"] = backwards / forwards;
}
BENCHMARK(archive_backwards)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
