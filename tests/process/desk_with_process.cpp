#include "process/desk_with_process.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "trajectory/binary_trajectory.h"

namespace pathstat::desk {
namespace {

std::string trimmed_end(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

/// Reads big-endian numbers with plain shifts, so that the test does not lean on the program's own reader.
class Bytes {
 public:
  explicit Bytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("no file " + path.string());
    data_.assign(std::istreambuf_iterator<char>(file), {});
  }
  bool at_end() const { return at_ == data_.size(); }
  std::int32_t i32() { return static_cast<std::int32_t>(bits(4)); }
  double f64() {
    const std::uint64_t pattern = bits(8);
    double value = 0;
    std::memcpy(&value, &pattern, sizeof value);
    return value;
  }

 private:
  std::uint64_t bits(int count) {
    std::uint64_t value = 0;
    for (int k = 0; k < count; ++k) value = value << 8 | static_cast<unsigned char>(data_.at(at_++));
    return value;
  }
  std::vector<char> data_;
  std::size_t at_ = 0;
};

}  // namespace

DeskWithProcess::DeskWithProcess(Protocol protocol)
    : ui({.message = [this](const Message& message) { messages.push_back(message); },
          .progress = {},
          .status = {},
          .returned = [this](const std::string& text) { returned.push_back(text); },
          .interrupted = [this] { return interrupt; }}),
      session(
          server, [this](std::string_view line) { output.emplace_back(line); }, [] { return false; }) {
  register_interface_operations(server, ui);
  register_plot_operations(server, graphs);
  register_data_model_operations(server, model);
  register_analysis_operations(server, model);
  if (!problem_.empty()) throw std::runtime_error(problem_);
  std::filesystem::create_directories(work());
  model.set_folder(work());
  const std::string trouble = session.start({PATHSTAT_PROGRAM, work(), directory_.path(), protocol});
  if (!trouble.empty()) throw std::runtime_error(trouble);
}

DeskWithProcess::DeskWithProcess(const char* example) : DeskWithProcess(Protocol::tcp) {
  if (load_example(example) != 0) throw std::runtime_error(std::string("cannot load ") + example);
}

std::int32_t DeskWithProcess::run(std::string_view word, std::string_view arguments) {
  return session.command(word, arguments).value_or(-9999);
}

std::int32_t DeskWithProcess::run_lines(const std::vector<std::string_view>& lines) {
  for (const auto line : lines) {
    const auto end = std::min(line.find(' '), line.size());
    const auto status = run(line.substr(0, end), line.substr(std::min(end + 1, line.size())));
    if (status != 0) return status;
  }
  return 0;
}

std::pair<std::int32_t, std::vector<std::string>> DeskWithProcess::told(std::string_view word,
                                                                        std::string_view arguments) {
  const auto status = run(word, arguments);
  return {status, take_keys()};
}

std::vector<std::string> DeskWithProcess::values(const std::string& word) {
  const auto answers = session.request({&word, 1});
  if (!answers || answers->empty()) return {};
  std::vector<std::string> texts = answers->front().values;
  for (auto& text : texts) text = trimmed_end(text);
  return texts;
}

std::string DeskWithProcess::value(const std::string& word) {
  const auto texts = values(word);
  return texts.empty() ? "" : texts.front();
}

std::string DeskWithProcess::range(const std::string& word) {
  const auto answers = session.request({&word, 1});
  return answers && !answers->empty() && !answers->front().ranges.empty() ? answers->front().ranges.front() : "";
}

std::vector<std::string> DeskWithProcess::take_keys() {
  std::vector<std::string> keys;
  for (const auto& message : messages) keys.push_back(message.key);
  messages.clear();
  return keys;
}

std::int32_t DeskWithProcess::load_example(const std::string& name) {
  return run("TRAJECTORY", std::string(EXAMPLES_DIR) + "/" + name + "/" + name + ".trj");
}

std::vector<std::string> DeskWithProcess::graph_titles() const {
  std::vector<std::string> titles;
  for (const auto handle : graphs.shown_graphs()) titles.push_back(trimmed_end(graphs.graph(handle)->title));
  return titles;
}

const DataSet& DeskWithProcess::data_set(std::size_t graph, std::size_t set) const {
  return *graphs.data_set(graphs.graph(graphs.shown_graphs().at(graph))->sets.at(set));
}

std::vector<double> DeskWithProcess::shown_positions() const {
  std::vector<double> xyz;
  for (const auto& at : model.model(model.current_model())->data.positions) xyz.insert(xyz.end(), at.begin(), at.end());
  return xyz;
}

ExampleFrame::ExampleFrame(const std::string& example, std::int32_t number) : xyz(3000) {
  std::int32_t handle = 0, status = 0, count = 0, ignored = 0;
  std::array<double, 6> cell{};
  kvA_TRJ_Open(EXAMPLES_DIR "/" + example + "/" + example + ".trj", 100, handle, status);
  kvA_TRJ_ReadFrame(handle, number, status);
  kvA_TRJ_ValueDouble(handle, 1058, cell, count, ignored);
  edge = cell[0];
  kvA_TRJ_ValueDouble(handle, 1071, xyz, count, status);
  if (status != 0) throw std::runtime_error("no frame of " + example);
  xyz.resize(static_cast<std::size_t>(count));
  kvA_TRJ_Close(handle, ignored);
}

std::vector<double> log_column(const std::string& example, std::string_view heading) {
  std::ifstream log(std::string(EXAMPLES_DIR) + "/" + example + "/" + example + ".thermo.csv");
  std::string line;
  std::getline(log, line);
  std::size_t column = 0;
  std::istringstream headings(line);
  for (std::string name; std::getline(headings, name, ',') && name != heading;) ++column;
  std::vector<double> values;
  while (std::getline(log, line)) {
    std::istringstream cells(line);
    std::string cell;
    for (std::size_t k = 0; k <= column; ++k) std::getline(cells, cell, ',');
    values.push_back(std::stod(cell));
  }
  return values;
}

ScratchSeries read_scratch(const std::filesystem::path& path) {
  Bytes bytes(path);
  const auto framed = [&](std::int32_t length, auto read) {
    if (bytes.i32() != length) throw std::runtime_error("leading length");
    read();
    if (bytes.i32() != length) throw std::runtime_error("trailing length");
  };
  ScratchSeries series;
  framed(20, [&] {
    for (auto* field : {&series.points, &series.values_per_point, &series.mark, &series.kind, &series.extras}) {
      *field = bytes.i32();
    }
  });
  for (std::int32_t k = 0; k < series.points; ++k) {
    framed(12 + 8 * series.values_per_point, [&] {
      series.numbers.push_back(bytes.i32());
      series.x.push_back(bytes.f64());
      auto& row = series.values.emplace_back();
      for (std::int32_t v = 0; v < series.values_per_point; ++v) row.push_back(bytes.f64());
    });
  }
  if (series.kind == 10004 && series.extras == 0 && !bytes.at_end()) throw std::runtime_error("bytes behind the end");
  return series;
}

}  // namespace pathstat::desk
