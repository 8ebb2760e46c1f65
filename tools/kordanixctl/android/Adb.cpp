#include "android/Adb.h"

#include "android/ShellWord.h"
#include "run/ProgramFile.h"

namespace control {

void Adb::explain(const std::string& text) const {
    if (isShowing()) {
        *mShown << "# " << text << '\n';
    }
}

std::vector<std::string> Adb::withSerial(const std::vector<std::string>& words) const {
    std::vector<std::string> all;
    if (!mSerial.empty()) {
        all = {"-s", mSerial};
    }
    all.insert(all.end(), words.begin(), words.end());
    return all;
}

std::string Adb::line(const std::vector<std::string>& words) const {
    std::vector<std::string> own = withSerial(words);
    // adb joins what follows by blanks, so a line of plain words may stand as it is.
    const std::string last = own.back();
    const std::size_t blank = last.find(' ');
    const bool isPlain =
        blank != std::string::npos && last.find_first_of("'\"$|&;<>()*?\\#~") == std::string::npos;
    own.pop_back();
    return "adb " + shellLine(own) + ' ' + (isPlain ? last : shellWord(last));
}

Answer Adb::run(const std::vector<std::string>& words) const {
    if (isShowing()) {
        *mShown << line(words) << '\n';
        return {};
    }
    return runHelper(mProgram, withSerial(words));
}

Answer Adb::shell(const std::vector<std::string>& words) const {
    return shellText(shellLine(words));
}

Answer Adb::shellText(const std::string& line) const {
    return run({"shell", line});
}

Answer Adb::unpack(const std::vector<std::string>& words, const std::string& folder) const {
    const std::vector<std::string> fetch = {"exec-out", shellLine(words)};
    // Not with the owners that the files have on the device.
    const std::vector<std::string> tar = {"-x", "-o", "-f", "-", "-C", folder};
    if (isShowing()) {
        *mShown << line(fetch) << " | tar " << shellLine(tar) << '\n';
        return {};
    }
    Answer archive = run(fetch);
    if (archive.status != 0) {
        return archive;
    }
    const ProgramFile program = findProgram("tar");
    return program.result == SUCCESS ? runHelper(program.path, tar, archive.out)
                                     : Answer{program.result, {}, "there is no program 'tar' in PATH"};
}

}  // namespace control
