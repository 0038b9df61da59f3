#pragma once

#include <initializer_list>
#include <string>

namespace zephcore {

/// The locale that the first of the environment @p variables names that is set, as "language_TERRITORY", without
/// encoding or modifier; "en_US" when none is, and for "C" and "POSIX". That of the thread's own language where it has one.
std::string EnvironmentLocale(std::initializer_list<const char*> variables);

}  // namespace zephcore
