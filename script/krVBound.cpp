// Bound values: the members of a bound string.
#include "script/krVBound.h"

krVariant* krVStringPtr::getMember(const std::string& name, krBlock*, const krArgs& args) {
    return krConvert::stringMember(this, toString(), name, args);
}
