#pragma once

#include "opengl/context/Call.h"

#include <initializer_list>
#include <random>
#include <vector>

/// Numbers at random.
class Dice {
public:
    explicit Dice(unsigned seed) : mEngine(seed) {}

    GLuint bits() { return static_cast<GLuint>(mEngine()); }
    int below(int end) { return static_cast<int>(bits() % static_cast<unsigned>(end)); }
    bool oneIn(int n) { return below(n) == 0; }
    GLfloat fraction() { return static_cast<GLfloat>(below(9)) / 8; }
    GLboolean flag() { return static_cast<GLboolean>(below(2)); }
    int size() { return below(20); }

    template <typename Value>
    Value pick(std::initializer_list<Value> values) {
        return values.begin()[below(static_cast<int>(values.size()))];
    }

    /// One of them, or none.
    GLuint object(const std::vector<GLuint>& names) {
        return oneIn(3) || names.empty() ? 0 : names[bits() % names.size()];
    }

private:
    std::mt19937 mEngine;
};
