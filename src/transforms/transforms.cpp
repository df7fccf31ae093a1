#include "transforms/transforms.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <new>
#include <string_view>

#include "coreapi/messages.h"
#include "support/named_memory.h"
#include "transforms/real_transform.h"

namespace pathstat {
namespace {

constexpr double pi = 3.141592653589793;
constexpr std::size_t shortest = 3;

using MakeTables = void (*)(std::int64_t, std::span<double>);
using Transform = void (*)(std::span<const double>, std::span<double>, std::span<double>);

void transform(std::span<const double> input, std::span<double> output, std::int64_t work_per_point,
               std::string_view too_short, MakeTables make_tables, Transform run) try {
  if (input.size() < shortest) return show_message(too_short);
  const auto n = static_cast<std::int64_t>(input.size());
  std::int32_t status = 0;
  const NamedBlock<double> work("fft.kestrel", work_per_point * n + 30, status);
  if (status != 0) return show_message("PATHSTAT_ERROR_34");
  make_tables(n, work.span());
  run(input, output, work.span());
} catch (const std::bad_alloc&) {
  show_message("PATHSTAT_ERROR_34");
}

/// The real transform of all of `data` with what its tables are followed by.
void real_forward(std::span<double> data, std::span<double> work) {
  const std::size_t length = data.size();
  fft3trf_(data, work.first(length), work.subspan(length, length), work.subspan(2 * length));
}

/// Folds the even sequence into one for the real transform of length n-1. @return what becomes element 2
double fold_even(std::span<double> x, std::span<const double> table) {
  const std::size_t n = x.size();
  double second = x[0] - x[n - 1];
  x[0] += x[n - 1];
  for (std::size_t k = 1; k < n / 2; ++k) {
    const std::size_t mirrored = n - 1 - k;
    const double sum = x[k] + x[mirrored];
    const double difference = x[k] - x[mirrored];
    second += table[mirrored] * difference;
    x[k] = sum - table[k] * difference;
    x[mirrored] = sum + table[k] * difference;
  }
  if (n % 2 != 0) x[n / 2] *= 2.0;
  return second;
}

/// Turns the real transform into the cosine transform.
void unfold_even(std::span<double> x, double second) {
  const std::size_t n = x.size();
  double waiting = x[1];
  x[1] = second;
  for (std::size_t i = 3; i < n; i += 2) {
    const double next = x[i];
    x[i] = x[i - 2] - x[i - 1];
    x[i - 1] = waiting;
    waiting = next;
  }
  if (n % 2 != 0) x[n - 1] = waiting;
}

/// Folds the odd sequence in the first n elements into one of n+1 elements.
void fold_odd(std::span<double> x, std::span<const double> table) {
  const std::size_t n = x.size() - 1;
  double y = x[0];
  x[0] = 0.0;
  for (std::size_t k = 0; k < n / 2; ++k) {
    const std::size_t mirrored = n - 1 - k;
    const double difference = y - x[mirrored];
    const double sum = table[k] * (y + x[mirrored]);
    y = x[k + 1];
    x[k + 1] = difference + sum;
    x[mirrored + 1] = sum - difference;
  }
  if (n % 2 != 0) x[n / 2 + 1] = 4.0 * y;
}

/// Turns the real transform into the sine transform.
void unfold_odd(std::span<double> x) {
  const std::size_t n = x.size() - 1;
  x[0] *= 0.5;
  for (std::size_t i = 2; i < n; i += 2) {
    const double imaginary = x[i];
    x[i] = x[i - 2] + x[i - 1];
    x[i - 1] = -imaginary;
  }
  if (n % 2 == 0) x[n - 1] = -x[n];
}

}  // namespace

void fftcos_(std::span<const double> input, std::span<double> output) {
  transform(input, output, 6, "PATHSTAT_ERROR_35", fftcosi_, fft2ost_);
}

void fftsin_(std::span<const double> input, std::span<double> output) {
  transform(input, output, 5, "PATHSTAT_ERROR_36", fftsini_, fft2int_);
}

void fft3d_(std::span<double> values, double spacing) {
  const std::size_t n = values.size();
  if (n == 0) return;
  const double cube = spacing * spacing * spacing;
  double sum = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    const auto place = static_cast<double>(i + 1);
    values[i] *= place;
    sum += place * values[i];
  }
  const double scale = 2.0 * static_cast<double>(n) * cube;
  fftsin_(values.first(n - 1), values);
  for (std::size_t i = n - 1; i > 0; --i) values[i] = values[i - 1] * scale / static_cast<double>(i);
  values[0] = 2.0 * sum * cube;
}

void fftcosi_(std::int64_t n, std::span<double> work) {
  if (n < 4) {
    std::puts(" The length of sequence has to be greater than 3");
    return;
  }
  const auto size = static_cast<std::size_t>(n);
  for (std::size_t k = 1; k < size / 2; ++k) {
    const double angle = static_cast<double>(k) * pi / static_cast<double>(n - 1);
    work[k] = 2.0 * std::sin(angle);
    work[size - 1 - k] = 2.0 * std::cos(angle);
  }
  fftftri_(n - 1, work.subspan(size));
}

void fftsini_(std::int64_t n, std::span<double> work) {
  if (n < 2) {
    std::puts(" The length of sequence has to be greater than 1");
    return;
  }
  const auto half = static_cast<std::size_t>(n / 2);
  for (std::size_t k = 0; k < half; ++k) {
    work[k] = 2.0 * std::sin(static_cast<double>(k + 1) * pi / static_cast<double>(n + 1));
  }
  fftftri_(n + 1, work.subspan(half));
}

void fft2ost_(std::span<const double> input, std::span<double> output, std::span<double> work) {
  const std::size_t n = input.size();
  const auto x = output.first(n);
  fftcopy_(static_cast<std::int64_t>(n), input, 1, x, 1);
  if (n == 2) {
    const double first = x[0];
    x[0] += x[1];
    x[1] = first - x[1];
  } else if (n == 3) {
    const double ends = x[0] + x[2];
    const double middle = 2.0 * x[1];
    x[1] = x[0] - x[2];
    x[0] = ends + middle;
    x[2] = ends - middle;
  } else if (n > 3) {
    const double second = fold_even(x, work.first(n));
    real_forward(x.first(n - 1), work.subspan(n));
    unfold_even(x, second);
  }
}

void fft2int_(std::span<const double> input, std::span<double> output, std::span<double> work) {
  constexpr double root_of_three = 1.7320508075688772;
  const std::size_t n = input.size();
  fftcopy_(static_cast<std::int64_t>(n), input, 1, output, 1);
  if (n == 1) {
    output[0] *= 2.0;
  } else if (n == 2) {
    const double first = output[0];
    output[0] = (first + output[1]) * root_of_three;
    output[1] = (first - output[1]) * root_of_three;
  } else if (n > 2) {
    const auto x = output.first(n + 1);
    fold_odd(x, work.first(n / 2));
    real_forward(x, work.subspan(n / 2));
    unfold_odd(x);
  }
}

}  // namespace pathstat
