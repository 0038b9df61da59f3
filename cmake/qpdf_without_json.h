#pragma once

// Included before everything else where clang up to 14 compiles what uses qpdf. It cannot compile qpdf's JSON class, which
// holds a std::vector of itself: it asks for the vector's destructor too early where that is constexpr, as it is in C++20.
// No function that takes or returns one is called.
#define JSON_HH
class JSON;
