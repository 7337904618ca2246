#include "documents.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

char const * const declaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";

std::string attributesOf(std::size_t bytes) {
    std::string text = declaration;
    text += "<points>\n";
    for (std::size_t number = 0; text.size() < bytes; ++number) {
        std::string const value = std::to_string(number);
        text += "  <point id=\"p" + value + "\" x=\"" + value + ".25\" y=\"-" + value
                + ".5\" z=\"0\" red=\"12\" green=\"200\" blue=\"" + std::to_string(number % 256)
                + "\" layer=\"ground\" visible=\"yes\" weight=\"0.75\"/>\n";
    }
    return text + "</points>\n";
}

std::string longTextsOf(std::size_t bytes) {
    static char const * const sentences[]{
        "Съешь ещё этих мягких французских булок, да выпей же чаю. ",
        "Ξεσκεπάζω την ψυχοφθόρα βδελυγμία, είπε ο γέρος. ",
        "いろはにほへと ちりぬるを わかよたれそ つねならむ。",
        "敏捷的棕色狐狸跳过了懒狗，然后在河边的树下睡着了。",
    };
    std::string text = declaration;
    text += "<book>\n";
    for (std::size_t number = 0; text.size() < bytes; ++number) {
        text += "  <paragraph>";
        for (std::size_t sentence = 0; sentence < 24; ++sentence) {
            text += sentences[(number + sentence / 6) % 4];
        }
        text += "</paragraph>\n";
    }
    return text + "</book>\n";
}

std::string deepOf(std::size_t bytes) {
    std::string text = declaration;
    text += "<forest>\n";
    while (text.size() < bytes) {
        for (int level = 0; level < 64; ++level) {
            text += "<branch" + std::to_string(level) + ">";
        }
        text += "leaf";
        for (int level = 63; level >= 0; --level) {
            text += "</branch" + std::to_string(level) + ">";
        }
        text += "\n";
    }
    return text + "</forest>\n";
}

std::string fileText(std::filesystem::path const & path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace

std::string recordsOf(std::size_t bytes) {
    static char const * const names[]{"Anna Berg", "Jonas Wolf", "Maria Silva", "Erik Lund", "Nora Quist"};
    static char const * const towns[]{"Northport", "Elmsford", "Grayhill", "Lakeview"};
    std::string text = declaration;
    text += "<records>\n";
    for (std::size_t number = 0; text.size() < bytes; ++number) {
        std::string const value = std::to_string(number);
        text += "  <record id=\"" + value + "\" kind=\"person\">\n    <name>" + names[number % 5]
                + "</name>\n    <town code=\"" + std::to_string(number % 97) + "\">" + towns[number % 4]
                + "</town>\n    <phone>555-" + std::to_string(1000 + number % 9000) + "</phone>\n    <balance>"
                + std::to_string(number * 7 % 10000)
                + ".50</balance>\n    <note>opened by hand in spring</note>\n  </record>\n";
    }
    return text + "</records>\n";
}

std::vector<Document> raceDocuments(bool quick) {
    std::size_t const bytes = quick ? 500'000 : 4'000'000;
    std::vector<Document> documents{
        {"records", recordsOf(bytes), 1},
        {"many attributes", attributesOf(bytes), 1},
        {"long multi-byte texts", longTextsOf(bytes), 1},
        {"64 levels deep", deepOf(bytes), 1},
        {"2 KB, many times", recordsOf(2'000), quick ? 100 : 500},
    };
    // A real file that is there wherever the build tool is, from its package cmake-data.
    for (auto const & entry : std::filesystem::directory_iterator("/usr/share")) {
        std::filesystem::path const path = entry.path() / "Templates/MSBuild/nasm.xml";
        if (entry.path().filename().string().starts_with("cmake") && std::filesystem::exists(path)) {
            documents.push_back({"nasm.xml of CMake", fileText(path), quick ? 20 : 200});
        }
    }
    return documents;
}
