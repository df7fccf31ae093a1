#pragma once

#include <array>
#include <cstdint>

namespace pathstat {

/// Numbers that a frame has of a row.
enum class FrameExtent : std::uint8_t { one, six, per_molecule, measures };

/// Where a row's numbers come from in a frame.
struct FrameSource {
  std::int32_t id;
  std::int32_t key;
  FrameExtent extent = FrameExtent::one;
};

/// The rows that a trajectory gives, by their identifiers in the order of the catalogue.
inline constexpr auto frame_sources = std::to_array<FrameSource>({
    {1, 400049},
    {2, 400025},
    {3, 400050},
    {4, 400036},
    {5, 400035},
    {6, 400144},
    {101, 400026},
    {102, 400027},
    {103, 400028},
    {104, 400029},
    {105, 400147},
    {106, 400031},
    {107, 400030},
    {108, 400032},
    {109, 400033},
    {110, 400034},
    {111, 400106},
    {112, 400107},
    {113, 400108},
    {114, 400109},
    {115, 400111},
    {116, 400112},
    {117, 400113},
    {118, 400114},
    {119, 400115},
    {120, 400116},
    {121, 400110},
    {122, 400174},
    {123, 400179},
    {124, 400178},
    {201, 400020},
    {202, 400068},
    {203, 400063},
    {204, 400064},
    {205, 400085, FrameExtent::six},
    {206, 400149, FrameExtent::six},
    {207, 400064},
    {208, 400151},
    {902, 400117, FrameExtent::per_molecule},
    {904, 400118, FrameExtent::per_molecule},
    {905, 400119, FrameExtent::per_molecule},
    {906, 400120, FrameExtent::per_molecule},
    {907, 400121, FrameExtent::per_molecule},
    {909, 400133, FrameExtent::per_molecule},
    {910, 400154, FrameExtent::per_molecule},
    {911, 400134, FrameExtent::per_molecule},
    {914, 400122, FrameExtent::per_molecule},
    {915, 400123, FrameExtent::per_molecule},
    {916, 400124, FrameExtent::per_molecule},
    {917, 400125, FrameExtent::per_molecule},
    {918, 400127, FrameExtent::per_molecule},
    {919, 400128, FrameExtent::per_molecule},
    {920, 400129, FrameExtent::per_molecule},
    {921, 400130, FrameExtent::per_molecule},
    {922, 400131, FrameExtent::per_molecule},
    {923, 400132, FrameExtent::per_molecule},
    {924, 400126, FrameExtent::per_molecule},
    {501, 0, FrameExtent::measures},
    {502, 0, FrameExtent::measures},
    {503, 0, FrameExtent::measures},
    {504, 0, FrameExtent::measures},
    {505, 0, FrameExtent::measures},
    {506, 0, FrameExtent::measures},
});

}  // namespace pathstat
