#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace pathstat::desk {

/// What a series of values in the order of time says. A number that cannot be known, as the error of one value, is
/// absent; times are in units of the spacing of the values.
struct SeriesStatistics {
  std::size_t values = 0;   ///< that are finite
  std::size_t skipped = 0;  ///< that are not
  double mean = 0;
  std::optional<double> error;      ///< standard error of the mean
  std::optional<double> deviation;  ///< standard deviation, with values - 1 below the root
  std::optional<double> drift;      ///< rise of the fitted line from the first value to the last
  std::optional<double> drift_error;
  bool drifts = false;                     ///< by more than three errors that have a plateau
  std::optional<double> correlation_time;  ///< integrated: ½ + Σ ρ(k); absent where nothing fluctuates
  std::optional<double> effective;         ///< number of independent values that know the mean as well
  bool has_plateau = false;                ///< the error no longer rises with the width of the blocks
};

/// The standard error of the mean by blocking: averages of ever wider blocks (Flyvbjerg & Petersen, J. Chem. Phys. 91,
/// 461 (1989)) up to the width B that first has B³ > 2 n (error(B)/error(1))⁴ (Wolff, Comput. Phys. Commun. 156, 143
/// (2004), in the form of Lee et al., Phys. Rev. E 83, 066706 (2011)).
struct BlockingError {
  double error = 0;  ///< at the plateau, or else the largest of those seen
  std::size_t width = 1;
  double inefficiency = 1;   ///< (error / error of width 1)², so many values count for one
  bool has_plateau = false;  ///< found, with at least five blocks
};

/// @param values  finite, at least 2
BlockingError blocking_error(std::span<const double> values);

/// Integrated correlation time ½ + Σ ρ(k) in spacings of the values, the sum cut at the first k that is six times the
/// time so far (Sokal, in: Functional Integration, NATO ASI B 361, 131 (1997)), and corrected for the mean having been
/// taken from the same values (Wolff 2004, eq. 49).
///
/// Where the correlation reaches far, the values are averaged in pairs until it does not: the time of the averages, by
/// their variance, is that of the values.
///
/// @param values  finite
/// @return absent for fewer than 4 values, without fluctuation, or where the cut lies beyond half of the series
std::optional<double> correlation_time(std::span<const double> values);

/// All of the above, and the drift by a line of least squares, its error widened by the inefficiency of the values
/// around the line.
///
/// @param values  one a frame; those that are not finite are skipped
SeriesStatistics series_statistics(std::span<const double> values);

/// Why not to rely on the mean of a series.
enum class SeriesDoubt {
  none,
  constant,        ///< all values are the same
  drifting,        ///< the series is not in equilibrium
  too_short,       ///< no plateau, or fewer than twenty independent values
  errors_disagree  ///< that of blocking and that of the correlation time differ by more than half
};

/// The first doubt that applies, in the order of the list.
SeriesDoubt doubt_about(const SeriesStatistics& statistics);

}  // namespace pathstat::desk
