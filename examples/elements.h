// The chemical elements.
#pragma once

#include <string_view>

/// An element. Masses are the standard atomic weights of 2021 (Prohaska et al., Pure
/// Appl. Chem. 94 (2022) 573-600) in five digits, or without one the mass number of a
/// long-lived isotope.
struct Element {
  std::string_view symbol;
  double mass;
};

constexpr unsigned kNumElements = 118;

/// The element with an atomic number from 1 to kNumElements.
const Element& GetElement(unsigned number);

/// The atomic number of a symbol in any case of letters, with "D" and "T" for
/// hydrogen; 0 for any other text.
unsigned char GetAtomicNumber(std::string_view symbol);
