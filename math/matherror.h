#pragma once

namespace nuvia {

// Result code of every NuException the math library throws: the caller misused an operation
// (for instance handed a vector of the wrong size).
inline constexpr int MathMisuseCode = 1;

// Throws NuException(MathMisuseCode, "<operation> <problem>").
[[noreturn]] void throwMathError(const char* operation, const char* problem);

}  // namespace nuvia
