#include "runs/PropertyTexts.h"

#include "io/EscapedText.h"
#include "io/PlainFile.h"

namespace platform {

std::string writePropertyTexts(const std::string& path, const PropertyTexts& texts) {
    std::string lines;
    for (const auto& [name, text] : texts) {
        lines += name + ' ' + escapeText(text) + '\n';
    }
    const int error = replaceFile(path, lines);
    return error == 0 ? std::string() : "cannot write " + path + ": " + plainFileError(error);
}

}  // namespace platform
