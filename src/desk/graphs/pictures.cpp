#include "desk/graphs/pictures.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include "desk/link/work_directory.h"
#include "desk/messages/visible_text.h"

namespace pathstat::desk {
namespace {

/// Colours by number. 3, 4 and 5 are those of most graphs; all stand apart on white, for colour-blind eyes too where
/// sixteen colours allow it.
constexpr std::string_view palette[] = {
    "#222222", "#7f7f7f", "#8a6d3b", "#0072b2", "#d55e00", "#009e73", "#8e44ad", "#e69f00",
    "#cc79a7", "#56b4e9", "#7b3f00", "#4b0082", "#a6a800", "#17a2a2", "#c2185b", "#1b3a6b",
};

/// A curve of more points is thinned out before it is drawn.
constexpr std::size_t most_points = 6000;

bool drawable(const PlotPoint& point) { return std::isfinite(point.x) && std::isfinite(point.y); }

/// The curve as it looks at the width of a picture: of each run of points the lowest and the highest.
std::vector<PlotPoint> thinned(const std::vector<PlotPoint>& points) {
  if (points.size() <= most_points) return points;
  std::vector<PlotPoint> kept;
  const std::size_t runs = most_points / 2;
  for (std::size_t run = 0; run < runs; ++run) {
    const auto first = points.begin() + static_cast<std::ptrdiff_t>(run * points.size() / runs);
    const auto last = points.begin() + static_cast<std::ptrdiff_t>((run + 1) * points.size() / runs);
    auto [low, high] =
        std::minmax_element(first, last, [](const PlotPoint& a, const PlotPoint& b) { return a.y < b.y; });
    if (low > high) std::swap(low, high);
    kept.push_back(*low);
    if (low != high) kept.push_back(*high);
  }
  return kept;
}

/// A text of gnuplot on one line: in single quotes, in which nothing is replaced, and its apostrophes in double ones. A
/// > goes into an SVG as it stands, where ]]> is an error.
std::string literal(std::string_view text) {
  std::string literal = "'";
  for (const char c : visible_lines(text)) {
    if (c == '>' && literal.ends_with("]]")) literal += ' ';
    if (c == '\'')
      literal += R"('."'".')";
    else
      literal += c == '\n' || c == '\t' ? ' ' : c;
  }
  return literal + "'";
}

/// The name of a picture inside its SVG, where gnuplot takes letters, digits and _.
std::string terminal_name(const Figure& figure) {
  std::string name = figure.name;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

std::string block_name(std::size_t figure, std::size_t curve) { return fmt::format("$f{}c{}", figure, curve); }

/// The points of a curve; an empty line, where a point cannot be drawn or lies farther than `gap` from the one before,
/// leaves the curve open.
void add_points(std::string& script, const std::string& name, const std::vector<PlotPoint>& points,
                float gap = std::numeric_limits<float>::max()) {
  script += name + " << EOD\n";
  float before = points.empty() ? 0 : points.front().y;
  for (const auto& point : points) {
    if (std::abs(point.y - std::exchange(before, point.y)) > gap) script += '\n';
    script += drawable(point) ? fmt::format("{:.9g} {:.9g}\n", point.x, point.y) : std::string("\n");
  }
  script += "EOD\n";
}

/// Angles that are more than half a turn apart are neighbours across ±180°: a line between them would tell of nothing.
float widest_gap(const Figure& figure) {
  constexpr float half_turn = 180;
  return figure.y_text.ends_with("(°)") ? half_turn : std::numeric_limits<float>::max();
}

constexpr std::string_view guide_colour = "#b07d00";

bool is_line(const Guide& guide) { return guide.from == guide.to; }

std::string guide_style(const Guide& guide) {
  return is_line(guide) ? fmt::format("lines lw 1.4 dt 2 lc rgb '{}'", guide_colour)
                        : fmt::format("boxes fs transparent solid 0.15 noborder lc rgb '{}'", guide_colour);
}

/// Shades and lines behind the curves.
std::string guides(const Figure& figure) {
  std::string text = "unset arrow\nunset object\n";
  for (const auto& guide : figure.guides) {
    if (is_line(guide)) {
      text += fmt::format(
          "set arrow from first {0:.9g}, graph 0 to first {0:.9g}, graph 1 nohead back lw 1.4 dt 2 lc rgb '{1}'\n",
          guide.from, guide_colour);
    } else {
      text += fmt::format(
          "set object rectangle from first {:.9g}, graph 0 to first {:.9g}, graph 1 behind fs transparent solid 0.15 "
          "noborder "
          "fc rgb '{}'\n",
          guide.from, guide.to, guide_colour);
    }
  }
  return text;
}

/// The plot command, and the blocks of points that it draws. Curves of one colour differ by their dashes.
std::string plot_command(std::string& script, const Figure& figure, std::size_t number) {
  std::string plot;
  std::map<std::int32_t, int> uses;
  for (std::size_t k = 0; k < figure.curves.size(); ++k) {
    const auto& curve = figure.curves[k];
    if (std::none_of(curve.points->begin(), curve.points->end(), drawable)) continue;
    const auto name = block_name(number, k);
    const auto colour = palette[static_cast<std::size_t>(std::abs(curve.colour % 16))];
    if (curve.histogram) {
      add_points(script, name, *curve.points);
    } else {
      add_points(script, name, thinned(*curve.points), widest_gap(figure));
    }
    const auto style = curve.points->size() == 1 ? std::string("points pt 7")
                                                 : fmt::format("{} lw 1.8 dt {}", curve.histogram ? "histeps" : "lines",
                                                               uses[curve.colour]++ % 5 + 1);
    plot += fmt::format("{} {} with {} lc rgb '{}' {}", plot.empty() ? "plot" : ",", name, style, colour,
                        curve.label.empty() ? "notitle" : "title " + literal(curve.label));
    if (!curve.highlighted) continue;
    add_points(script, name + "m", {*curve.highlighted});
    plot += fmt::format(", {}m with points pt 6 ps 1.2 lw 1.6 lc rgb '{}' notitle", name, colour);
  }
  for (const auto& guide : figure.guides) {
    if (plot.empty()) break;
    plot += fmt::format(", keyentry with {} title {}", guide_style(guide), literal(guide.label));
  }
  return plot + "\n";
}

/// The least box around all points that can be drawn.
struct Box {
  PlotPoint low{std::numeric_limits<float>::max(), std::numeric_limits<float>::max()};
  PlotPoint high{std::numeric_limits<float>::lowest(), std::numeric_limits<float>::lowest()};
};

Box box_of(const Figure& figure) {
  Box box;
  for (const auto& curve : figure.curves) {
    for (const auto& point : *curve.points) {
      if (!drawable(point)) continue;
      box.low = {std::min(box.low.x, point.x), std::min(box.low.y, point.y)};
      box.high = {std::max(box.high.x, point.x), std::max(box.high.y, point.y)};
    }
  }
  return box;
}

/// True for histograms, and for curves that are nowhere below zero, rounding aside, but come near it.
bool starts_at_zero(const Figure& figure, const Box& box) {
  constexpr float near = 0.25F, rounding = 1e-5F;
  const bool histograms = std::ranges::all_of(figure.curves, &Curve::histogram);
  return histograms || (box.high.y > 0 && box.low.y >= -rounding * box.high.y && box.low.y <= near * box.high.y);
}

/// Where the legend goes: the corner of the frame with the least of the curves in it.
struct Legend {
  std::string_view corner;
  bool hides = false;  ///< even there it hides a part of them
};

Legend legend_of(const Figure& figure, Box box, bool from_zero) {
  constexpr float width = 0.52F, height_of_line = 0.08F;
  constexpr std::size_t places_between_points = 8;
  const auto lines = static_cast<float>(figure.guides.size() + (figure.curves.size() > 1 ? figure.curves.size() : 0));
  const float height = std::min(0.5F, height_of_line * (lines + 1));
  struct Corner {
    std::string_view name;
    bool right, top;
    std::size_t places = 0;
  };
  std::array corners{Corner{"right top", true, true}, Corner{"left top", false, true},
                     Corner{"right bottom", true, false}, Corner{"left bottom", false, false}};
  if (from_zero) box.low.y = 0;
  const float across = box.high.x - box.low.x, up = box.high.y - box.low.y;
  const auto count = [&](float x, float y) {
    for (auto& corner : corners) {
      const bool inside = (corner.right ? x > 1 - width : x < width) && (corner.top ? y > 1 - height : y < height);
      corner.places += inside ? 1 : 0;
    }
  };
  for (const auto& curve : figure.curves) {
    const auto points = thinned(*curve.points);
    for (std::size_t k = 0; k + 1 < points.size(); ++k) {
      const auto &from = points[k], &to = points[k + 1];
      for (std::size_t place = 0; place <= places_between_points; ++place) {
        const float part = static_cast<float>(place) / places_between_points;
        count((from.x + part * (to.x - from.x) - box.low.x) / across,
              (from.y + part * (to.y - from.y) - box.low.y) / up);
      }
    }
  }
  const auto& best = *std::ranges::min_element(corners, {}, &Corner::places);
  return {best.name, best.places > 0};
}

std::string settings(const Figure& figure) {
  const auto box = box_of(figure);
  const bool from_zero = starts_at_zero(figure, box);
  auto text = fmt::format(
      "set label 1 {} at graph 0, graph 1 offset 0, {} left noenhanced font ',15'\n"
      "set label 2 {} at graph 0, graph 1 offset 0, 1 left noenhanced font ',11' tc rgb '#666666'\n"
      "set xlabel {} noenhanced\nset ylabel {} noenhanced\n",
      literal(figure.heading), figure.note.empty() ? "1.2" : "2.4", literal(figure.note), literal(figure.x_text),
      literal(figure.y_text));
  text += figure.x_range ? fmt::format("set xrange [{:.9g}:{:.9g}]\n", figure.x_range->x,
                                       box.high.x > figure.x_range->x ? std::min(box.high.x, figure.x_range->y)
                                                                      : figure.x_range->y)
                         : std::string("set xrange [*:*] noextend\n");
  const bool has_key = figure.curves.size() > 1 || !figure.guides.empty();
  const auto legend = has_key ? legend_of(figure, box, from_zero) : Legend{};
  text += fmt::format("set yrange [{}:*]\nset offsets graph 0, graph 0, graph {}, graph {}\n", from_zero ? "0" : "*",
                      legend.hides ? "0.3" : "0.04", from_zero ? "0" : "0.04");
  text += has_key ? fmt::format(
                        "set key inside {} Left reverse noenhanced samplen 2 spacing 1.2 width -1 opaque "
                        "fc rgb '#ffffff'\n",
                        legend.hides ? "right top" : legend.corner)
                  : std::string("set key off\n");
  text += figure.aspect_ratio > 0 ? fmt::format("set size ratio {:.4g}\n", 1.0 / figure.aspect_ratio)
                                  : std::string("set size noratio\n");
  return text + guides(figure);
}

constexpr std::string_view look =
    "set encoding utf8\n"
    "set datafile missing 'nan'\n"
    "set border 3 lc rgb '#444444'\n"
    "set tics nomirror out textcolor rgb '#222222'\n"
    "set grid lc rgb '#dddddd' lt 1 lw 0.6\n"
    "set samples 2\n"
    "set tmargin 4.2\n"
    "set rmargin 4\n";

constexpr const char *input_name = "pictures.gnuplot", *messages_name = "pictures.out";

/// A kind of picture: what asks for it, how gnuplot is told, how its files are named, and how a whole one ends.
struct Kind {
  bool PictureKinds::*wanted;
  std::string_view terminal, extension, end;
};
constexpr Kind all_kinds[] = {
    {&PictureKinds::svg, "svg size 900,480 font 'sans-serif,13' background '#ffffff' name '{}'", ".svg", "</svg>"},
    {&PictureKinds::png, "pngcairo size 1800,960 font 'DejaVu Sans,13' fontscale 2 linewidth 2", ".png", "IEND"},
    {&PictureKinds::pdf, "pdfcairo size 9in,4.8in font 'DejaVu Sans,12' linewidth 1.3", ".pdf", "%%EOF"},
};

/// Runs gnuplot in a folder to its end. @return its wait status, or -1 if it could not start
int run_gnuplot(const std::filesystem::path& folder) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, messages_name, O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_adddup2(&actions, 1, 2);
  // Without what the user's own settings for gnuplot would change.
  std::string name = "gnuplot", plain = "-d", file = input_name;
  char* const arguments[] = {name.data(), plain.data(), file.data(), nullptr};
  pid_t child = 0;
  const int failure = ::posix_spawnp(&child, name.c_str(), &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) {
    errno = failure;
    return -1;
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  return status;
}

bool is_whole(const std::filesystem::path& picture, std::string_view end) {
  constexpr std::streamoff longest_tail = 16;
  std::ifstream file(picture, std::ios::binary | std::ios::ate);
  const auto size = static_cast<std::streamoff>(file.tellg());
  file.seekg(std::max<std::streamoff>(0, size - longest_tail));
  const std::string tail(std::istreambuf_iterator<char>(file), {});
  return tail.find(end) != std::string::npos;
}

/// Why pictures are missing. What gnuplot says names lines of its input, which nobody else sees.
std::string why_undrawn(int status, const std::filesystem::path& folder) {
  if (auto full = full_disk(folder); !full.empty()) return full;
  if (WIFSIGNALED(status)) return fmt::format("gnuplot was ended by signal {}", WTERMSIG(status));
  std::ifstream messages(folder / messages_name);
  for (std::string line; std::getline(messages, line);) {
    const auto place = line.find(" line ");
    const auto text = place == std::string::npos ? std::string::npos : line.find(": ", place);
    if (line.find(input_name) != std::string::npos && text != std::string::npos) {
      return "gnuplot says: " + line.substr(text + 2);
    }
  }
  return fmt::format("gnuplot ended with status {}", WEXITSTATUS(status));
}

}  // namespace

std::string picture_script(std::span<const Figure> figures, PictureKinds kinds) {
  std::string script(look);
  for (std::size_t k = 0; k < figures.size(); ++k) {
    const auto& figure = figures[k];
    if (!figure.has_points()) continue;
    script += settings(figure);
    const auto plot = plot_command(script, figure, k);
    for (const auto& kind : all_kinds) {
      if (!(kinds.*kind.wanted)) continue;
      script += fmt::format("set terminal {}\nset output '{}{}'\n{}",
                            fmt::format(fmt::runtime(kind.terminal), terminal_name(figure)), figure.name,
                            kind.extension, plot);
    }
    script += "unset output\n";
  }
  return script;
}

std::string draw_pictures(std::span<const Figure> figures, PictureKinds kinds, const std::filesystem::path& folder) {
  std::vector<std::pair<std::filesystem::path, std::string_view>> wanted;  // and their ends
  std::error_code ignored;
  for (const auto& figure : figures) {
    for (const auto& kind : all_kinds) {
      if (!(kinds.*kind.wanted)) continue;
      const auto picture = folder / (figure.name + std::string(kind.extension));
      std::filesystem::remove(picture, ignored);
      if (figure.has_points()) wanted.emplace_back(picture, kind.end);
    }
  }
  if (wanted.empty()) return {};
  std::ofstream input(folder / input_name, std::ios::binary);
  input << picture_script(figures, kinds);
  input.close();
  if (!input)
    return fmt::format("no pictures: cannot write {}: {}", (folder / input_name).string(), std::strerror(errno));

  const int status = run_gnuplot(folder);
  if (status == -1) return fmt::format("no pictures: gnuplot cannot be started: {}", std::strerror(errno));
  std::string missing;
  for (const auto& [picture, end] : wanted) {
    if (is_whole(picture, end)) continue;
    std::filesystem::remove(picture, ignored);
    missing += (missing.empty() ? "" : ", ") + picture.filename().string();
  }
  return missing.empty() ? missing : fmt::format("not drawn: {}: {}", missing, why_undrawn(status, folder));
}

}  // namespace pathstat::desk
