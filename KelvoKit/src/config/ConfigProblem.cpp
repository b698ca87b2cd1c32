#include "kelvo/ConfigProblem.h"

namespace kelvo {

std::string_view rawValue(ConfigProblem::Kind kind) {
    using Kind = ConfigProblem::Kind;
    switch (kind) {
        case Kind::unreadable: return "unreadable";
        case Kind::empty: return "empty";
        case Kind::truncated: return "truncated";
        case Kind::notJSON: return "notJSON";
        case Kind::notAnObject: return "notAnObject";
        case Kind::missingKey: return "missingKey";
        case Kind::wrongType: return "wrongType";
    }
    return "unreadable";
}

std::string_view rawValue(ConfigProblem::Expected expected) {
    using Expected = ConfigProblem::Expected;
    switch (expected) {
        case Expected::nothing: return "nothing";
        case Expected::text: return "text";
        case Expected::textList: return "textList";
        case Expected::textListOrNull: return "textListOrNull";
        case Expected::wholeNumber: return "wholeNumber";
        case Expected::trueOrFalse: return "trueOrFalse";
    }
    return "nothing";
}

}  // namespace kelvo
