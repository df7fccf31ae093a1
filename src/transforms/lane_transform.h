#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// Complex transforms of four sequences side by side, one in each lane of the processor's vector registers, for sums of
// spectra over many sequences. The spectra stay in the order in which the stages leave them, which is the same for all
// sequences of a plan; only the sum comes back from there.
namespace pathstat {

/// Sequences that are transformed together.
constexpr std::size_t lanes_together = 4;

/// One element of each of the sequences.
struct alignas(sizeof(double) * lanes_together) LaneComplex {
  std::array<double, lanes_together> re;
  std::array<double, lanes_together> im;
};

/// The transform X(k) = sum over j = 0 ... L-1 of x(j) e^(-2 pi i j k / L), L = 2^a 3^b 5^c, by decimation in frequency
/// in place (W. M. Gentleman, G. Sande, Fast Fourier transforms for fun and profit, 1966).
class LanePlan {
 public:
  /// A length by its stages.
  struct Shape {
    std::size_t length = 1;
    std::vector<std::size_t> radices;
    double cost = 0.0;  ///< of one transform of four sequences, in operations of a register
  };
  /// The cheapest length that is not below `least`.
  static Shape cheapest(std::int64_t least);

  explicit LanePlan(const Shape& shape);

  std::size_t length() const { return length_; }

  /// Frequencies in the plan's own order.
  /// @param data  length() elements, of which those from `filled` on are 0
  void transform(std::span<LaneComplex> data, std::size_t filled) const;

  /// The same sequences, times the length, from frequencies in the plan's order.
  void back(std::span<LaneComplex> data) const;
  /// The sum over k of X(k) e^(2 pi i j k / L), in 80-bit floats where the platform has them, to keep rounding out of
  /// what is done once only.
  /// @param data  length() elements, in the plan's order before and in that of j behind
  void back(std::span<std::complex<long double>> data) const;

 private:
  /// `radix` transforms of a part each make one of `radix * part`.
  struct Stage {
    std::size_t radix;
    std::size_t part;
    std::vector<std::complex<double>> twiddles;  ///< part by part element, for q = 1 ... radix-1
  };

  void run(std::size_t stage, std::span<LaneComplex> data) const;

  std::size_t length_ = 1;
  std::vector<Stage> stages_;
};

/// Puts the product a b in the place of a.
void multiply_lanes(std::span<LaneComplex> a, std::span<const LaneComplex> b);

/// Adds the sum over the lanes of conj(a) b to each element.
void add_lane_products(std::span<const LaneComplex> a, std::span<const LaneComplex> b,
                       std::span<std::complex<double>> sums);

}  // namespace pathstat
