// Reading placement lists.
#include <cmath>
#include <sstream>

#include "krSplitBuilder.h"

namespace {

bool number(std::istringstream& in, float& out) {
    std::string word;
    if (!(in >> word)) return false;
    char* end = nullptr;
    out = std::strtof(word.c_str(), &end);
    return *end == '\0' && std::isfinite(out);
}

}  // namespace

bool krParsePlacements(const std::string& text, std::vector<krPlacement>& out, std::string& error) {
    std::istringstream lines(text);
    std::string line;
    int lineNumber = 0;
    while (std::getline(lines, line)) {
        ++lineNumber;
        line = line.substr(0, line.find('#'));
        std::istringstream in(line);
        krPlacement p;
        p.line = lineNumber;
        if (!(in >> p.file)) continue;
        auto fail = [&](const std::string& what) {
            error = "line " + std::to_string(lineNumber) + ": " + what;
            return false;
        };
        if (!number(in, p.position.x) || !number(in, p.position.y) || !number(in, p.position.z))
            return fail("a position of three numbers must follow the file name");
        const size_t slash = p.file.rfind('/');
        p.name = p.file.substr(slash == std::string::npos ? 0 : slash + 1);
        p.name = p.name.substr(0, p.name.rfind('.'));
        std::string key;
        while (in >> key) {
            if (key == "rotate") {
                float degrees;
                krVector3 axis;
                if (!number(in, degrees) || !number(in, axis.x) || !number(in, axis.y) || !number(in, axis.z))
                    return fail("rotate takes degrees and an axis of three numbers");
                if (isZero(axis)) return fail("the axis of a rotation cannot be zero");
                p.rotation = krQuat::fromAxisAngle(degrees * krDegToRad, axis);
            } else if (key == "name") {
                if (!(in >> p.name)) return fail("name takes a word");
            } else if (key == "type") {
                float type;
                if (!number(in, type) || type != std::floor(type) || std::fabs(type) > 1e9f)
                    return fail("type takes a whole number");
                p.type = static_cast<int32_t>(type);
            } else {
                return fail("unknown word '" + key + "'");
            }
        }
        out.push_back(p);
    }
    if (out.empty()) {
        error = "the list places no mesh files";
        return false;
    }
    return true;
}
