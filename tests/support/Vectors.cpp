#include "support/Vectors.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace {

Vector ReadVector(const std::filesystem::path& path) {
    Vector vector;
    vector.name = path.stem();
    std::ifstream file(path);
    bool inBytes = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("#")) continue;
        if (inBytes && line != "end") {
            std::istringstream bytes(line.substr(0, line.find('#')));
            for (unsigned byte; bytes >> std::hex >> byte;) vector.bytes += static_cast<char>(byte);
            continue;
        }
        const std::size_t blank = line.find(' ');
        const std::string word = line.substr(0, blank);
        const std::string rest = blank == std::string::npos ? "" : line.substr(blank + 1);
        if (word == "bytes" || word == "end") {
            inBytes = word == "bytes";
        } else if (word == "class") {
            vector.className = rest;
        } else if (word == "newest") {
            vector.newest = rest == "yes";
        } else if (word == "identifier") {
            vector.identifier = rest;
        } else if (word == "old-identifier") {
            vector.oldIdentifier = rest;
        } else if (word == "member") {
            Vector::MemberText member{};
            std::istringstream fields(rest);
            fields >> member.id >> member.index;
            std::getline(fields >> std::ws, member.text);
            vector.members.push_back(member);
        } else {
            throw std::runtime_error(vector.name + ": unknown line: " + line);
        }
    }
    return vector;
}

template <class Message>
std::unique_ptr<CMsg> Make() {
    return std::make_unique<Message>();
}

}  // namespace

const std::vector<Vector>& AllVectors() {
    static const std::vector<Vector> vectors = [] {
        std::vector<Vector> all;
        for (const auto& file : std::filesystem::directory_iterator(VECTORS_DIR)) all.push_back(ReadVector(file));
        std::sort(all.begin(), all.end(), [](const Vector& a, const Vector& b) { return a.name < b.name; });
        return all;
    }();
    return vectors;
}

std::unique_ptr<CMsg> MakeByClass(const std::string& className) {
    static const std::map<std::string, std::unique_ptr<CMsg> (*)()> makers = {
        {"CMsg", Make<CMsg>},
        {"CObsMsg", Make<CObsMsg>},
        {"CAcObsMsg", Make<CAcObsMsg>},
        {"CPosnMsg", Make<CPosnMsg>},
        {"CCompPosnMsg", Make<CCompPosnMsg>},
        {"CProfProcessedMsg", Make<CProfProcessedMsg>},
        {"CPosnListMsg", Make<CPosnListMsg>},
        {"CTargMsg", Make<CTargMsg>},
        {"CTransMsg", Make<CTransMsg>},
        {"CMobTransMsg", Make<CMobTransMsg>},
        {"CTransRange", Make<CTransRange>},
        {"CCopMsg", Make<CCopMsg>},
    };
    return makers.at(className)();
}

CString ToBody(const std::string& bytes) { return {bytes.data(), static_cast<int>(bytes.size())}; }
