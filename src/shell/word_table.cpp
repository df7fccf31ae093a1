#include "shell/word_table.h"

#include <algorithm>
#include <cmath>

#include "shell/arguments.h"
#include "shell/messages.h"
#include "shell/output_texts.h"
#include "shell/running_analysis.h"
#include "support/number_format.h"

namespace pathstat {
namespace {

constexpr std::int32_t refused = 1;

/// Carries out the effect of one word.
class Command {
 public:
  explicit Command(const CommandWord& row) : row_(row) {}

  std::int32_t operator()(const Action& action) const {
    for (const auto& guard : action.guards.view()) {
      if (guard.holds()) continue;
      return guard.names_source_word ? refuse(guard.key, action.source_word) : refuse(guard.key);
    }
    if (action.nesting == Nesting::free) return action.run();
    if (RunningAnalysis::any()) return decline(row_.word, another_analysis_runs);
    if (action.nesting == Nesting::frames) return action.run();
    const RunningAnalysis running;
    return action.run();
  }

  std::int32_t operator()(const TextSetting& setting) const {
    if (setting.rebuilds && RunningAnalysis::any()) return decline(row_.word, another_analysis_runs);
    std::int32_t status = 0;
    kvz_argfillstring_(TextField(setting.field), 1, 0, setting.allowed, status);
    if (status > 0) return status;
    return setting.after == nullptr ? 0 : setting.after();
  }

  std::int32_t operator()(const LogicalSetting& setting) const {
    std::int32_t status = 0;
    kvz_arglogical_(*setting.target, 1, status);
    if (status > 0) return status;
    if (setting.after != nullptr) setting.after();
    return 0;
  }

  std::int32_t operator()(const IntegerSetting& setting) const {
    std::int32_t value = 0;
    std::int32_t status = 0;
    kvz_argint_(value, 1, setting.low.now(), setting.high.now(), status);
    return status > 0 ? status : setting.store(value);
  }

  std::int32_t operator()(const DoubleSetting& setting) const {
    double value = 0.0;
    std::int32_t status = 0;
    kvz_argdouble_(value, 1, setting.low.now(), setting.high.now(), status);
    if (status > 0) return status;
    return std::isfinite(value) ? setting.store(value) : refused;
  }

  std::int32_t operator()(const Label&) const { return 0; }

 private:
  const CommandWord& row_;
};

struct Define {
  void operator()(const TextQuery& query) const {
    kvz_definevalue_(query.value());
    if (!query.range.empty()) kvz_definerange_(query.range);
  }
  void operator()(const FlagQuery& query) const { kvz_definevalue_(formatted(bool(*query.value), "(L1)")); }
  void operator()(const CountQuery& query) const { kvz_definevalue_(formatted(*query.value, query.format)); }
  void operator()(const NumberQuery& query) const {
    if (query.applies != nullptr && !query.applies()) return;
    kvz_definevalue_(formatted(query.value(), query.format));
  }
  void operator()(const OtherQuery& query) const { query.define(); }
};

/// The row of a word; shows a message if there is none.
const CommandWord* known_word(const WordTable& table, std::string_view word) {
  const CommandWord* row = find_command_word(table.words, word);
  if (row == nullptr) refuse("KVZ_CMD_UNDEF", table.application, trimmed(word));
  return row;
}

}  // namespace

std::int32_t run_command(const WordTable& table, std::string_view command, std::string_view arguments) {
  const ArgumentsAside outer;
  std::int32_t count = 0;
  sch_preparearguments_(arguments, count);
  const CommandWord* row = known_word(table, command);
  return row == nullptr ? refused : std::visit(Command(*row), row->effect);
}

void answer_request(const WordTable& table, std::string_view key) {
  const CommandWord* word = known_word(table, key);
  if (word == nullptr) return;
  const auto query = std::ranges::find(table.queries, word->word, &QueryRow::word);
  if (query != table.queries.end()) std::visit(Define{}, query->answer);
}

}  // namespace pathstat
