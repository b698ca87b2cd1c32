#pragma once
// Why Kelvo refused, skipped or failed something, as a value: what happened (`code`) and
// the path, name or status it concerns (`subject`, as the text shows it). The library
// decides with codes; the text is made only where a person reads it (`text`, localised
// through L10n), so that the rules and their tests never depend on a sentence.
#include <string>
#include <string_view>

namespace kelvo {

struct Reason {
    enum class Code {
        // the environment anchors no removal
        homeUnanchored,    // subject: the home
        tmpDirUnanchored,  // subject: the temporary folder
        // the target as a whole
        processRunning,    // subject: the process name
        appRunning,        // subject: the running bundle
        protectedAppID,    // subject: the bundle identifier
        protectedAppName,  // subject: the application name
        // one path of a target
        protectedPath,     // refused by the guard; subject: the path as given
        resolvedUnsafe,    // refused once its links are resolved; subject: the resolved path
        symlinkFinal,      // subject: the link
        symlinkAncestor,   // subject: where the parent resolves
        otherOwner,        // subject: the path
        ownerUnknown,      // subject: the path
        noPermission,      // nothing of it went; subject: its last component
        systemRemnant,     // some of it stayed; subject: its last component
        trashItself,       // it is the trash or lies in it; subject: its last component
        trashOtherVolume,  // no trash on its file system; subject: its last component
        trashFailed,       // subject: its last component and the system's message
        // a command line Kelvo cannot check
        commandSyntax,     // subject: the construct
        commandVariable,   // subject: the variable's name
        commandPlace,      // subject: the word
        // a command that ran and failed
        toolNotFound,      // subject: empty
        exitStatus,        // subject: the status in decimal
    };

    Code code = Code::protectedPath;
    std::string subject;

    // The localised sentence in the language L10n chooses.
    std::string text() const;
    // The translation key the sentence comes from.
    static std::string_view key(Code code);

    friend bool operator==(const Reason&, const Reason&) = default;
};

}  // namespace kelvo
