#pragma once

namespace pathstat {

/// A complex number, or several side by side where V is a vector of them.
template <class V>
struct ComplexOf {
  V re;
  V im;
};
using Complex = ComplexOf<double>;

template <class V>
[[gnu::always_inline]] constexpr ComplexOf<V> operator+(const ComplexOf<V>& a, const ComplexOf<V>& b) {
  return {a.re + b.re, a.im + b.im};
}
template <class V>
[[gnu::always_inline]] constexpr ComplexOf<V> operator-(const ComplexOf<V>& a, const ComplexOf<V>& b) {
  return {a.re - b.re, a.im - b.im};
}
template <class V>
[[gnu::always_inline]] constexpr ComplexOf<V> operator*(double factor, const ComplexOf<V>& a) {
  return {factor * a.re, factor * a.im};
}

/// a times the conjugate of the factor.
template <class V>
[[gnu::always_inline]] constexpr ComplexOf<V> turned(const ComplexOf<V>& a, const ComplexOf<V>& factor) {
  return {factor.re * a.re + factor.im * a.im, factor.re * a.im - factor.im * a.re};
}

}  // namespace pathstat
