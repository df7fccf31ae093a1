#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace pathstat {

/// Operations that have no meaning outside the Core's own process.
constexpr std::array<std::string_view, 16> core_only_operations{
    "kvT_SortCustom",
    "kvT_RegisterFunction",
    "kvD_TRG_CreateGraphicsTrigger",
    "kvZ_PrimaryCommand",
    "kvZ_PrimaryCommandString",
    "kvU_TLS_RegisterModalState",
    "kvU_TLS_DefineCallback",
    "kvU_TLS_ActivateDefaultCallbacks",
    "kvU_TLS_RequestViewerInfo",
    "kvU_TLS_GetViewerComponent",
    "kvU_TLS_SetViewerUserData",
    "kvU_TLS_RegisterWindowObject",
    "kvU_TLS_RequestViewerID",
    "kvU_TLS_ChangeToModeCursor",
    "kvU_TLS_SetViewerScrollBarValues",
    "kvU_TLS_RequestMouseCoordinates",
};

/// A text as a template argument.
template <std::size_t N>
struct OperationName {
  constexpr OperationName(const char (&text)[N]) { std::copy_n(text, N, characters); }
  constexpr std::string_view view() const { return {characters, N - 1}; }
  char characters[N];
};

/// Stands for an operation of core_only_operations, whatever its arguments: core_only<"kvT_SortCustom">(...).
/// Sends nothing, says so on standard error and returns 0.
template <OperationName Name, class... Arguments>
requires(std::ranges::find(core_only_operations, Name.view()) != core_only_operations.end()) std::int32_t
    core_only(const Arguments&...) {
  std::fprintf(stderr, "%s can not be called from an external application", Name.characters);
  return 0;
}

}  // namespace pathstat
