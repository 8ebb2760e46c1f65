#include "gui/EmbeddedFont.h"

// The assembler includes the file: a byte array in C++ would cost the compiler seconds and take five times
// the bytes in the repository. "%object" and ".balign" mean the same on x86 and ARM.
asm(R"(
    .pushsection .rodata.kordanixFontRecord, "a", %progbits
    .balign 4
    .globl kordanixFontRecord
    .hidden kordanixFontRecord
    .type kordanixFontRecord, %object
kordanixFontRecord:
    .incbin "font.bin"
    .size kordanixFontRecord, . - kordanixFontRecord
    .popsection
)");

extern "C" __attribute__((visibility("hidden"))) const unsigned char kordanixFontRecord[];

namespace gui {

const unsigned char* embeddedFont() {
    return kordanixFontRecord;
}

}  // namespace gui
