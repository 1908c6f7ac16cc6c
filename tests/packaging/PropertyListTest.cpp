#include <gmock/gmock.h>

#include <QFile>
#include <QString>
#include <QXmlStreamReader>
#include <map>
#include <stdexcept>
#include <string>

namespace tavrel {
namespace {

using testing::Contains;
using testing::Pair;

/// The values of a property list's one dictionary: texts, and "true" or "false". Throws
/// std::runtime_error for what is not one.
std::map<std::string, std::string> readPropertyList(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("no file " + path.toStdString());
    }
    QXmlStreamReader xml(&file);
    const auto expect = [&](bool holds) {
        if (!holds) {
            throw std::runtime_error("no property list: line " + std::to_string(xml.lineNumber()) +
                                     " " + xml.errorString().toStdString());
        }
    };
    expect(xml.readNextStartElement() && xml.name() == u"plist");
    expect(xml.attributes().value(QStringLiteral("version")) == u"1.0");
    expect(xml.readNextStartElement() && xml.name() == u"dict");
    std::map<std::string, std::string> values;
    while (xml.readNextStartElement()) {
        expect(xml.name() == u"key");
        const std::string key = xml.readElementText().toStdString();
        expect(xml.readNextStartElement());
        const QString kind = xml.name().toString();
        const QString text = xml.readElementText();
        expect(kind == u"string" || kind == u"true" || kind == u"false");
        const bool isNew =
            values.emplace(key, (kind == u"string" ? text : kind).toStdString()).second;
        expect(isNew);
    }
    expect(!xml.readNextStartElement());
    while (!xml.atEnd()) {
        xml.readNext();
    }
    expect(!xml.hasError());
    return values;
}

class PropertyListTest : public testing::Test {
protected:
    const std::map<std::string, std::string> values = readPropertyList(PROPERTY_LIST);
};

TEST_F(PropertyListTest, identifiesTheApplicationWhosePreferencesHoldTheRegistry) {
    EXPECT_THAT(values, Contains(Pair("CFBundleIdentifier", "local.display-control")));
}

TEST_F(PropertyListTest, agreesWithTheProjectOnTheVersion) {
    EXPECT_THAT(values, Contains(Pair("CFBundleShortVersionString", PROJECT_VERSION)));
    EXPECT_THAT(values, Contains(Pair("CFBundleVersion", PROJECT_VERSION)));
}

TEST_F(PropertyListTest, agreesWithTheBuildOnTheOldestSystem) {
    EXPECT_STREQ(DEPLOYMENT_TARGET, "13.3");
    EXPECT_THAT(values, Contains(Pair("LSMinimumSystemVersion", DEPLOYMENT_TARGET)));
}

TEST_F(PropertyListTest, namesTheProgramAndTheIconAsTheBundleHasThem) {
    EXPECT_THAT(values, Contains(Pair("CFBundleExecutable", "Tavrel")));
    EXPECT_THAT(values, Contains(Pair("CFBundleName", "Tavrel")));
    EXPECT_THAT(values, Contains(Pair("CFBundleIconFile", "Tavrel.icns")));
    EXPECT_THAT(values, Contains(Pair("CFBundlePackageType", "APPL")));
}

TEST_F(PropertyListTest, saysThatTheApplicationDrawsInHighResolution) {
    EXPECT_THAT(values, Contains(Pair("NSHighResolutionCapable", "true")));
    EXPECT_THAT(values, Contains(Pair("NSPrincipalClass", "NSApplication")));
}

TEST_F(PropertyListTest, hasNoPlaceholderLeft) {
    for (const auto& [key, value] : values) {
        EXPECT_FALSE(value.empty()) << key;
        EXPECT_EQ(value.find_first_of("@$"), std::string::npos) << key << ": " << value;
    }
}

}  // namespace
}  // namespace tavrel
