#include "services/file_host.h"

#include <array>

#include "coreapi/error_reporting.h"
#include "coreapi/operations.h"

namespace pathstat {
namespace {

constexpr std::size_t longest_item = 1023;

std::string path_item_of_core(std::string_view variable, std::int32_t k) {
  std::array<char, longest_item> item;
  const TextField field(item);
  kvs_getenvpathitem_(variable, k, field);
  return std::string(trimmed(field));
}

}  // namespace

FileHost& file_host() {
  static FileHost host{
      [] {
        kvu_bel_ring_(0, 0);
        kvs_txp_expose_();
      },
      [](std::string_view variable) { return kvs_getenvpathitemtotal_(variable); },
      path_item_of_core,
      [](std::int32_t code) { kvU_ERR_Handler(code); },
  };
  return host;
}

}  // namespace pathstat
