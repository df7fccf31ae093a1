#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

/// Operations on vectors of three elements and on 3 x 3 matrices.
///
/// A matrix is nine elements stored by columns: element (row r, column c), counted from 0, stands at r + 3 c.
/// Arguments run input, input, output. An output may be one of the inputs. The given names are the templates at one
/// element type: `dvec*`, `dmat*` 64-bit floats, `rvec*`, `rmat*` 32-bit floats, `ivec*` 32-bit integers.
namespace pathstat {

using Vector3 = std::array<double, 3>;
using Matrix3 = std::array<double, 9>;

template <class T>
using VectorIn = std::span<const T, 3>;
template <class T>
using VectorOut = std::span<T, 3>;
template <class T>
using MatrixIn = std::span<const T, 9>;
template <class T>
using MatrixOut = std::span<T, 9>;

/// The type in which products and sums of T are formed before they are rounded or cut to T.
template <class T>
using Wide = std::conditional_t<std::is_integral_v<T>, std::int64_t, double>;

/// sum = a + b
template <class T>
constexpr void vector_add(VectorIn<T> a, VectorIn<T> b, VectorOut<T> sum) {
  for (std::size_t k = 0; k < 3; ++k) sum[k] = a[k] + b[k];
}

/// difference = a - b
template <class T>
constexpr void vector_subtract(VectorIn<T> a, VectorIn<T> b, VectorOut<T> difference) {
  for (std::size_t k = 0; k < 3; ++k) difference[k] = a[k] - b[k];
}

/// The scalar product of a and b.
template <class T>
constexpr T vector_dot(VectorIn<T> a, VectorIn<T> b) {
  using W = Wide<T>;
  return static_cast<T>(W(a[0]) * W(b[0]) + W(a[1]) * W(b[1]) + W(a[2]) * W(b[2]));
}

/// product = a x b
template <class T>
constexpr void vector_cross(VectorIn<T> a, VectorIn<T> b, VectorOut<T> product) {
  using W = Wide<T>;
  const auto x = static_cast<T>(W(a[1]) * W(b[2]) - W(a[2]) * W(b[1]));
  const auto y = static_cast<T>(W(a[2]) * W(b[0]) - W(a[0]) * W(b[2]));
  const auto z = static_cast<T>(W(a[0]) * W(b[1]) - W(a[1]) * W(b[0]));
  product[0] = x, product[1] = y, product[2] = z;
}

/// The triple product a . (b x c), the determinant of the matrix with the columns a, b, c.
template <class T>
constexpr T vector_triple(VectorIn<T> a, VectorIn<T> b, VectorIn<T> c) {
  using W = Wide<T>;
  return static_cast<T>(W(a[0]) * (W(b[1]) * W(c[2]) - W(b[2]) * W(c[1])) +
                        W(a[1]) * (W(b[2]) * W(c[0]) - W(b[0]) * W(c[2])) +
                        W(a[2]) * (W(b[0]) * W(c[1]) - W(b[1]) * W(c[0])));
}

/// The length of v.
template <class T>
T vector_length(VectorIn<T> v) {
  using W = Wide<T>;
  return static_cast<T>(std::sqrt(W(v[0]) * W(v[0]) + W(v[1]) * W(v[1]) + W(v[2]) * W(v[2])));
}

/// unit = v / |v|; a zero vector stays as it is.
template <class T>
void vector_normalise(VectorIn<T> v, VectorOut<T> unit) {
  const T length = vector_length<T>(v);
  for (std::size_t k = 0; k < 3; ++k) unit[k] = length == T{0} ? v[k] : v[k] / length;
}

/// scaled = factor v
template <class T>
constexpr void vector_scale(VectorIn<T> v, T factor, VectorOut<T> scaled) {
  for (std::size_t k = 0; k < 3; ++k) scaled[k] = v[k] * factor;
}

template <class T>
constexpr void vector_copy(VectorIn<T> v, VectorOut<T> copy) {
  for (std::size_t k = 0; k < 3; ++k) copy[k] = v[k];
}

/// unit = the identity
template <class T>
constexpr void matrix_unit(MatrixOut<T> unit) {
  for (std::size_t k = 0; k < 9; ++k) unit[k] = T(k % 4 == 0 ? 1 : 0);
}

/// inverse = m^-1.
///
/// @param status  0, or 1 if |det m| is below 1e-99 or not a number of finite size; `inverse` is then left alone
template <class T>
void matrix_inverse(MatrixIn<T> m, MatrixOut<T> inverse, std::int32_t& status) {
  static_assert(std::is_floating_point_v<T>);
  const auto minor = [&](std::size_t a, std::size_t b, std::size_t c, std::size_t d) {
    return Wide<T>(m[a]) * m[b] - Wide<T>(m[c]) * m[d];
  };
  const std::array<Wide<T>, 9> adjugate{minor(4, 8, 5, 7), minor(2, 7, 1, 8), minor(1, 5, 2, 4),
                                        minor(5, 6, 3, 8), minor(0, 8, 2, 6), minor(2, 3, 0, 5),
                                        minor(3, 7, 4, 6), minor(1, 6, 0, 7), minor(0, 4, 1, 3)};
  const Wide<T> determinant = m[0] * adjugate[0] + m[3] * adjugate[1] + m[6] * adjugate[2];
  status = std::isfinite(determinant) && std::abs(determinant) >= 1e-99 ? 0 : 1;
  if (status != 0) return;
  for (std::size_t k = 0; k < 9; ++k) inverse[k] = static_cast<T>(adjugate[k] / determinant);
}

/// Applies m to each of the packed vectors: one vector is three elements, n vectors are 3 n.
///
/// @param results  as long as `vectors`; may be the same memory
template <class T>
constexpr void matrix_vectors(MatrixIn<T> m, std::span<const T> vectors, std::span<T> results) {
  using W = Wide<T>;
  for (std::size_t at = 0; at + 3 <= vectors.size() && at + 3 <= results.size(); at += 3) {
    const W x = vectors[at], y = vectors[at + 1], z = vectors[at + 2];
    for (std::size_t r = 0; r < 3; ++r) results[at + r] = static_cast<T>(m[r] * x + m[r + 3] * y + m[r + 6] * z);
  }
}

/// product = a b
template <class T>
constexpr void matrix_product(MatrixIn<T> a, MatrixIn<T> b, MatrixOut<T> product) {
  std::array<T, 9> columns{};
  matrix_vectors<T>(a, b, columns);
  for (std::size_t k = 0; k < 9; ++k) product[k] = columns[k];
}

inline constexpr auto& dvecadd_ = vector_add<double>;
inline constexpr auto& dvecsub_ = vector_subtract<double>;
inline constexpr auto& dvecdot_ = vector_dot<double>;
inline constexpr auto& dvecprod_ = vector_cross<double>;
inline constexpr auto& dveclen_ = vector_length<double>;
inline constexpr auto& dvecnorm_ = vector_normalise<double>;
inline constexpr auto& dvecscale_ = vector_scale<double>;
inline constexpr auto& dvectrip_ = vector_triple<double>;
inline constexpr auto& dveccopy_ = vector_copy<double>;
inline constexpr auto& dmatunit_ = matrix_unit<double>;
inline constexpr auto& dmatinv_ = matrix_inverse<double>;
inline constexpr auto& dmatmat_ = matrix_product<double>;
inline constexpr auto& dmatvecmul_ = matrix_vectors<double>;

inline constexpr auto& rvecadd_ = vector_add<float>;
inline constexpr auto& rvecsub_ = vector_subtract<float>;
inline constexpr auto& rvecdot_ = vector_dot<float>;
inline constexpr auto& rvecprod_ = vector_cross<float>;
inline constexpr auto& rveclen_ = vector_length<float>;
inline constexpr auto& rvecnorm_ = vector_normalise<float>;
inline constexpr auto& rvecscale_ = vector_scale<float>;
inline constexpr auto& rvectrip_ = vector_triple<float>;
inline constexpr auto& rveccopy_ = vector_copy<float>;
inline constexpr auto& rmatunit_ = matrix_unit<float>;
inline constexpr auto& rmatinv_ = matrix_inverse<float>;
inline constexpr auto& rmatmat_ = matrix_product<float>;
inline constexpr auto& rmatvecmul_ = matrix_vectors<float>;

inline constexpr auto& ivecadd_ = vector_add<std::int32_t>;
inline constexpr auto& ivecsub_ = vector_subtract<std::int32_t>;
inline constexpr auto& ivecdot_ = vector_dot<std::int32_t>;
inline constexpr auto& ivecprod_ = vector_cross<std::int32_t>;
inline constexpr auto& ivecscale_ = vector_scale<std::int32_t>;
inline constexpr auto& ivectrip_ = vector_triple<std::int32_t>;
inline constexpr auto& iveccopy_ = vector_copy<std::int32_t>;
inline constexpr auto& crossint_ = vector_cross<std::int32_t>;

/// result = m operand, where the operand is a matrix or a vector.
inline void dmatmul_(MatrixIn<double> m, MatrixIn<double> operand, MatrixOut<double> result) {
  matrix_product<double>(m, operand, result);
}
inline void dmatmul_(MatrixIn<double> m, VectorIn<double> operand, VectorOut<double> result) {
  matrix_vectors<double>(m, operand, result);
}
inline void rmatmul_(MatrixIn<float> m, MatrixIn<float> operand, MatrixOut<float> result) {
  matrix_product<float>(m, operand, result);
}
inline void rmatmul_(MatrixIn<float> m, VectorIn<float> operand, VectorOut<float> result) {
  matrix_vectors<float>(m, operand, result);
}

}  // namespace pathstat
