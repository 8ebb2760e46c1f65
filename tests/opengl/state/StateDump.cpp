#include "opengl/state/StateDump.h"

#include "opengl/context/Call.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <sstream>

namespace {

constexpr int MAX_NUMBERS = 16;  ///< of a matrix; what has more is a list of formats

/// What a function told; how many numbers that was.
template <typename Number, typename Get>
int take(double* numbers, const Get& get) {
    const auto unset = static_cast<Number>(-987654321);  // which none of them tells
    Number told[1024];
    std::fill_n(told, MAX_NUMBERS, unset);
    get(told);
    const auto count = static_cast<int>(std::find(told, told + MAX_NUMBERS, unset) - told);
    std::copy_n(told, count, numbers);
    return count;
}

struct Function {
    const char* name;
    unsigned indices;
    int (*ask)(GLenum name, GLuint index, double* numbers);
};

#define FUNCTION(function, indices, Number, call)                      \
    {                                                                  \
#function, indices, [](GLenum name, GLuint index, double* numbers) { \
            static_cast<void>(index);                                  \
            return take<Number>(numbers, [=](Number* to) { call; });   \
        } \
    }

const Function FUNCTIONS[] = {
    FUNCTION(IsEnabled, 1, GLint, *to = CALL(IsEnabled)(name)),
    FUNCTION(GetIntegerv, 1, GLint, CALL(GetIntegerv)(name, to)),
    FUNCTION(GetFloatv, 1, GLfloat, CALL(GetFloatv)(name, to)),
    FUNCTION(IsEnabledi, 3, GLint, *to = CALL(IsEnabledi)(name, index)),
    FUNCTION(GetIntegeri_v, 3, GLint, CALL(GetIntegeri_v)(name, index, to)),
    FUNCTION(GetFloati_v, 3, GLfloat, CALL(GetFloati_v)(name, index, to)),
    FUNCTION(GetTexEnvfv, 1, GLfloat, CALL(GetTexEnvfv)(GL_TEXTURE_ENV, name, to)),
    FUNCTION(GetVertexAttribfv, 5, GLfloat, CALL(GetVertexAttribfv)(index, name, to)),
    FUNCTION(GetVertexAttribPointerv, 5, std::uintptr_t,
             CALL(GetVertexAttribPointerv)(index, name, reinterpret_cast<void**>(to))),
    FUNCTION(GetPointerv, 1, std::uintptr_t, CALL(GetPointerv)(name, reinterpret_cast<void**>(to))),
    FUNCTION(GetQueryiv, 1, GLint, CALL(GetQueryiv)(name, GL_CURRENT_QUERY, to)),
    FUNCTION(GetUniformSubroutineuiv, 3, GLuint,
             CALL(GetUniformSubroutineuiv)(name, static_cast<GLint>(index), to)),
};

/// Mesa crashes when it is asked for the devices after these names.
constexpr GLenum FIRST = 0x0B00;
constexpr GLenum END = 0x9590;

/// Names that no state has: the time, and the log of a debugger.
const GLenum CHANGING[] = {GL_TIMESTAMP, GL_DEBUG_LOGGED_MESSAGES, GL_DEBUG_NEXT_LOGGED_MESSAGE_LENGTH};

void clearErrors() {
    while (CALL(GetError)() != GL_NO_ERROR) {
    }
}

}  // namespace

StateDump::StateDump() {
    clearErrors();
    for (const Function& function : FUNCTIONS) {
        std::vector<unsigned>& names = mNames.emplace_back();
        for (GLenum name = FIRST; name < END; ++name) {
            const auto isTold = [&](GLuint index) {
                double numbers[MAX_NUMBERS];
                const int count = function.ask(name, index, numbers);
                return CALL(GetError)() == GL_NO_ERROR && count > 0;
            };
            const bool isChanging = std::count(std::begin(CHANGING), std::end(CHANGING), name) > 0;
            if (!isChanging && (isTold(0) || isTold(1))) {
                names.push_back(name);
            }
        }
    }
}

void StateDump::readUnit(int unit, std::vector<StateValue>& dump) const {
    for (std::size_t i = 0; i < mNames.size(); ++i) {
        const Function& function = FUNCTIONS[i];
        for (const unsigned name : mNames[i]) {
            for (unsigned index = 0; index < function.indices; ++index) {
                double numbers[MAX_NUMBERS];
                const int count = function.ask(name, index, numbers);
                std::transform(numbers, numbers + count, std::back_inserter(dump), [&](double number) {
                    return StateValue{function.name, name, index, unit, number};
                });
            }
        }
    }
}

std::vector<StateValue> StateDump::read(bool mayBindFramebuffers) const {
    std::vector<StateValue> dump;
    readUnit(-1, dump);
    GLint active = 0;
    GLint draw = 0;
    GLint read = -1;  // it stays so where there is one binding
    CALL(GetIntegerv)(GL_ACTIVE_TEXTURE, &active);
    CALL(GetIntegerv)(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
    CALL(GetIntegerv)(GL_READ_FRAMEBUFFER_BINDING, &read);
    if (mayBindFramebuffers) {
        CALL(BindFramebuffer)(GL_FRAMEBUFFER, 0);
    }
    for (const int unit : {0, 1, 2}) {
        CALL(ActiveTexture)(GL_TEXTURE0 + static_cast<GLenum>(unit));
        readUnit(unit, dump);
    }
    CALL(ActiveTexture)(static_cast<GLenum>(active));
    if (mayBindFramebuffers) {
        CALL(BindFramebuffer)(GL_FRAMEBUFFER, static_cast<GLuint>(draw));
    }
    if (mayBindFramebuffers && read >= 0) {
        CALL(BindFramebuffer)(GL_READ_FRAMEBUFFER, static_cast<GLuint>(read));
    }
    clearErrors();
    return dump;
}

std::string StateDump::compare(const std::vector<StateValue>& before, const std::vector<StateValue>& after) {
    std::ostringstream text;
    if (before.size() != after.size()) {
        text << "another number of values";
    }
    for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i) {
        if (!(before[i] == after[i])) {
            text << before[i].function << "(0x" << std::hex << before[i].name << std::dec << ", "
                 << before[i].index << "): " << before[i].number << " -> " << after[i].number << '\n';
        }
    }
    return text.str();
}
