#include "desk/export/export_command.h"

#include <fmt/format.h>

#include <vector>

#include "desk/advice/trajectory_advice.h"
#include "desk/export/export_writer.h"
#include "desk/export/text_formats.h"
#include "desk/messages/visible_text.h"
#include "desk/model/connectivity.h"
#include "desk/model/coordinate_file.h"
#include "desk/model/model_import.h"
#include "desk/script/interrupts.h"
#include "desk/script/script_run.h"
#include "desk/selection/selection.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

int complain(const std::string& problem) {
  fmt::print(stderr, "pathdesk: {}\n", visible_lines(problem));
  return exit_code::not_run;
}

void tell(const std::string& text) { fmt::print("{}\n", visible_lines(text)); }

/// The model that lies beside a trajectory; empty if none does.
fs::path model_beside(const fs::path& trajectory) {
  std::error_code error;
  for (const auto* extension : model_extensions) {
    if (auto path = fs::path(trajectory).replace_extension(extension); fs::exists(path, error)) return path;
  }
  return {};
}

bool same_file(const fs::path& a, const fs::path& b) {
  std::error_code error;
  return fs::equivalent(a, b, error);
}

class Export {
 public:
  explicit Export(const ExportOptions& options) : options_(options), output_(options.output) {
    if (output_.empty()) output_ = options_.file.stem().concat(".pdb");
  }

  int run() {
    auto problem = read_model();
    if (problem.empty()) problem = check_output();
    if (problem.empty() && is_trajectory_) {
      auto [source, trouble] = open_frames(options_.file, model_);
      source_ = std::move(source);
      problem = std::move(trouble);
    }
    if (problem.empty()) problem = read_words();
    if (problem.empty()) problem = write();
    if (interrupts() > 0) return complain("interrupted; nothing was written"), exit_code::interrupted;
    return problem.empty() ? exit_code::success : complain(problem);
  }

 private:
  std::string read_model() {
    const auto kind = kind_of_file(options_.file);
    is_trajectory_ = kind == FileKind::trajectory;
    if (kind == FileKind::missing) return fmt::format("there is no file {}", options_.file.string());
    if (!is_trajectory_ && kind != FileKind::model)
      return fmt::format("{} is neither a trajectory nor a model", options_.file.string());
    model_path_ = !is_trajectory_          ? options_.file
                  : options_.model.empty() ? model_beside(options_.file)
                                           : options_.model;
    if (model_path_.empty())
      return fmt::format("no model lies beside {}; say with --model where it is", options_.file.string());
    const bool structured = model_path_.extension() == ".qfx";
    auto imported = structured ? read_model_file(model_path_.string()) : read_coordinate_file(model_path_.string());
    if (!imported.problem.empty()) return imported.problem;
    if (imported.models.empty()) return fmt::format("{} holds no model", model_path_.string());
    if (imported.models.size() > 1)
      tell(fmt::format("{} holds {} models; the first is taken", model_path_.string(), imported.models.size()));
    model_ = std::move(imported.models.front());
    if (model_.symmetry.size() > 1) tell("The symmetry images of the model's atoms are left out");
    return model_.atoms() == 0 ? fmt::format("{} holds no atoms", model_path_.string()) : std::string{};
  }

  std::string check_output() const {
    const auto beside = fs::path(output_).replace_extension(".qfx");
    if (same_file(output_, options_.file) || same_file(output_, model_path_) ||
        (output_.extension() == ".trj" && (same_file(beside, options_.file) || same_file(beside, model_path_))))
      return fmt::format("{} would be written over what is exported", output_.string());
    return {};
  }

  /// Reads the selection, and holds the choice of frames against what there can be.
  std::string read_words() {
    auto [selection, problem] = read_selection(options_.selection);
    if (!problem.empty()) return "--select: " + problem;
    selection_ = std::move(selection);
    first_ = options_.frame.value_or(options_.first);
    last_ = options_.frame ? options_.frame : options_.last;
    if (last_ && *last_ < first_) return fmt::format("the last frame, {}, comes before the first, {}", *last_, first_);
    if (!is_trajectory_ && (first_ > 1 || last_.value_or(1) > 1)) return "a model has one frame alone";
    if (!is_trajectory_) last_ = 1;
    return {};
  }

  std::string write() {
    auto [writer, problem] = make_export_writer(output_, source_.get());
    if (!problem.empty()) return problem;
    MolecularModel part;
    ExportedFrame frame{.model = part, .time = {}, .of_several = is_several()};
    frame.number = 0;
    for (std::int64_t number = first_; number <= last_.value_or(INT32_MAX); number += options_.step) {
      if (interrupts() > 0) return "interrupted";
      const auto wanted = static_cast<std::int32_t>(number);
      const auto end = source_ ? source_->read(wanted, model_, frame.time) : FrameEnd::read;
      if (end == FrameEnd::broken) return about_broken(wanted);
      if (end == FrameEnd::no_more) {
        if (last_ || frame.number == 0) return about_missing(wanted);
        break;
      }
      if (++frame.number == 1) {
        if (problem = choose_atoms(); !problem.empty()) return problem;
        part = part_of(model_, atoms_);
      } else {
        if (holds_one_frame(output_)) return one_frame_alone();
        refresh_part(model_, atoms_, part);
      }
      if (problem = writer->write(frame); !problem.empty()) return problem;
    }
    if (problem = writer->finish(frame); !problem.empty()) return problem;
    tell_written(frame, part);
    return {};
  }

  /// Whether the file is going to hold several frames. One that cannot be read counts: it ends the export, unless it
  /// can be read after all.
  bool is_several() {
    if (!source_ || options_.frame) return false;
    if (last_) return *last_ >= std::int64_t{first_} + options_.step;
    std::optional<double> time;
    const auto next = std::int64_t{first_} + options_.step;
    return next <= INT32_MAX && source_->read(static_cast<std::int32_t>(next), model_, time) != FrameEnd::no_more;
  }

  std::string one_frame_alone() const {
    return fmt::format("{} files hold one frame; say which with --frame", output_.extension().string());
  }

  /// Which atoms move is told by the trajectory, not by its model.
  std::string choose_atoms() {
    if (source_) {
      model_.movable.assign(model_.atoms(), 0);
      for (const auto place : source_->moving()) model_.movable[place] = 1;
    }
    std::optional<Connectivity> molecules;
    SelectionScope scope{.model = model_,
                         .molecules = [&]() -> const Connectivity& {
                           if (!molecules) molecules = find_molecules(model_);
                           return *molecules;
                         },
                         .selected = {},
                         .notes = {}};
    const auto flags = selection_->choose(scope);
    for (const auto& note : scope.notes) fmt::print(stderr, "pathdesk: {}\n", visible(note));
    for (std::uint32_t k = 0; k < flags.size(); ++k) {
      if (flags[k]) atoms_.push_back(k);
    }
    return atoms_.empty() ? "the selection chooses no atom" : std::string{};
  }

  /// The last frame in front of one that can be read.
  std::int32_t last_whole_before(std::int32_t number) {
    std::optional<double> time;
    std::int32_t low = 0;
    for (std::int32_t high = number; high - low > 1;) {
      const auto middle = low + (high - low) / 2;
      (source_->read(middle, model_, time) == FrameEnd::read ? low : high) = middle;
    }
    return low;
  }

  std::string about_missing(std::int32_t number) {
    return fmt::format("{} has no frame {}; the last is {}", options_.file.string(), number, last_whole_before(number));
  }

  std::string about_broken(std::int32_t number) {
    const auto whole = last_whole_before(number);
    const auto hint = whole >= first_ ? fmt::format("; --last {} exports what is whole", whole) : std::string{};
    return fmt::format("{} breaks off behind frame {}{}", options_.file.string(), whole, hint);
  }

  void tell_written(const ExportedFrame& frame, const MolecularModel& part) const {
    const auto extension = output_.extension().string();
    tell(fmt::format("Wrote {}: {} frame{} of {} atom{}", output_.string(), frame.number, frame.number == 1 ? "" : "s",
                     atoms_.size(), atoms_.size() == 1 ? "" : "s"));
    if (extension == ".trj") tell(fmt::format("Wrote {}", fs::path(output_).replace_extension(".qfx").string()));
    const int directions = periodic_directions(part.periodic_type);
    if (extension != ".trj" && directions != 0 && directions != 3)
      tell(fmt::format("The cell, which repeats in {} direction{}, is left out", directions,
                       directions == 1 ? "" : "s"));
    if (extension == ".pdb" && atoms_.size() > most_pdb_serials && !part.bonds.empty())
      tell(fmt::format("Bonds are left out: their records can't name atoms beyond {}", most_pdb_serials));
  }

  const ExportOptions& options_;
  fs::path output_, model_path_;
  bool is_trajectory_ = false;
  MolecularModel model_;
  std::unique_ptr<FrameSource> source_;
  SelectionPointer selection_;
  std::int32_t first_ = 1;
  std::optional<std::int32_t> last_;
  std::vector<std::uint32_t> atoms_;  ///< that are exported, by their places
};

}  // namespace

int run_export(const ExportOptions& options) {
  watch_interrupts();
  return Export(options).run();
}

}  // namespace pathstat::desk
