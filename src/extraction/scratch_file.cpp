#include "extraction/scratch_file.h"

#include <cstddef>
#include <utility>

#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "services/file_units.h"
#include "support/named_memory.h"

namespace pathstat {
namespace {

constexpr std::string_view deleted_model = "Deleted Model";

std::int32_t told(std::int32_t status) {
  if (status != 0) show_message("PATHSTAT_MSG_4");
  return status;
}

std::int32_t status_of(RecordStatus status) { return status == RecordStatus::ok ? 0 : scratch_file_damaged; }

std::int32_t open_with_head(std::string_view path, RecordReader& file, ScratchHead& head) {
  if (file.open(std::string(trimmed(path))) != RecordStatus::ok) return unit_error::open_failed;
  return status_of(read_scratch_head(file, head));
}

bool fits(const ScratchHead& head, const ScratchArrays& arrays) {
  const std::int64_t models = head.kind == kind_models ? head.points : 0;
  const auto holds = [](std::size_t size, std::int64_t count) { return std::cmp_greater_equal(size, count); };
  return holds(arrays.numbers.size(), head.points) && holds(arrays.x.size(), head.points) &&
         holds(arrays.values.size(), std::int64_t{head.points} * head.values) && holds(arrays.models.size(), models) &&
         holds(arrays.sizes.size(), models) && holds(arrays.extras.size(), head.extras);
}

/// Puts names and numbers of the models in the place of their objects.
void name_models(std::span<const std::int32_t> objects, std::span<std::int32_t> ids, std::span<ModelName> names,
                 std::int32_t& status) {
  NamedBlock<std::int32_t> exists("pathstat/SCF/tmp2", static_cast<std::int64_t>(objects.size()), status);
  if (status != 0) return;
  std::int32_t error = 0;
  const auto flags = exists.span().first(objects.size());
  if (!objects.empty()) kvd_validateoid_(objects, flags, error);
  for (std::size_t k = 0; k < objects.size(); ++k) {
    ids[k] = -1;
    names[k] = deleted_model;
    if (flags[k] == 0) continue;
    kvd_mod_name_(objects[k], names[k], error);
    kvd_id_(objects[k], ids[k], error);
  }
}

}  // namespace

std::string property_file(std::string_view extension) { return "./PathStat_prf" + std::string(trimmed(extension)); }

std::string fluctuation_file(std::string_view extension) { return "./PathStat_fluc" + std::string(trimmed(extension)); }

void writescratchfile_(std::int32_t data_kind, std::string_view file, std::span<const std::int32_t> numbers,
                       std::span<const double> x, std::span<const double> table, std::int32_t values,
                       std::int32_t row_stride, std::int32_t first_value, std::span<const std::int32_t> model_ids,
                       std::span<const std::int32_t> point_sizes, std::span<const double> extras,
                       std::int32_t& status) {
  const ScratchHead head{static_cast<std::int32_t>(numbers.size()), values, data_kind,
                         static_cast<std::int32_t>(extras.size())};
  const ScratchSeries series{head, numbers, x, table, first_value - 1, row_stride, model_ids, point_sizes, extras};
  const auto written = write_scratch(std::string(trimmed(file)), series);
  status = told(written == RecordStatus::failed ? unit_error::open_failed : status_of(written));
}

void scratchfileinfo_(std::int32_t& data_kind, std::string_view file, std::int32_t& points, std::int32_t& values,
                      std::int32_t& extras, std::int32_t& status) {
  RecordReader reader;
  ScratchHead head;
  status = told(open_with_head(file, reader, head));
  data_kind = head.kind;
  points = head.points;
  values = head.values;
  extras = head.extras;
}

void readscratchfile_(std::int32_t& data_kind, std::string_view file, std::span<std::int32_t> numbers,
                      std::span<double> x, std::span<double> table, std::int32_t& points, std::int32_t& values,
                      std::span<std::int32_t> model_ids, std::span<ModelName> model_names,
                      std::span<std::int32_t> point_sizes, std::span<double> extras, std::int32_t& extra_count,
                      std::int32_t& status) {
  RecordReader reader;
  ScratchHead head;
  status = open_with_head(file, reader, head);
  if (status != 0) return void(told(status));
  const bool of_models = head.kind == kind_models;
  NamedBlock<std::int32_t> objects("pathstat/SCF/tmp1", of_models ? head.points : 1, status);
  if (status != 0) return;
  const ScratchArrays arrays{numbers, x, table, objects.span(), point_sizes, extras};
  const bool has_room = fits(head, arrays) && (!of_models || (std::cmp_greater_equal(model_names.size(), head.points) &&
                                                              std::cmp_greater_equal(model_ids.size(), head.points)));
  status = told(has_room ? status_of(read_scratch_points(reader, head, arrays)) : scratch_file_damaged);
  if (status != 0) return;
  data_kind = head.kind;
  points = head.points;
  values = head.values;
  extra_count = head.extras;
  const auto models = static_cast<std::size_t>(head.points);
  if (of_models) name_models(objects.span().first(models), model_ids, model_names, status);
}

}  // namespace pathstat
