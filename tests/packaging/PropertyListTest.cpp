// The property list of the Mac's bundle, as the build has filled it in.
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
/// std::runtime_error when the file is not such a list.
std::map<std::string, std::string> readPropertyList(const QString& path) {
    QFile file(path);
    QXmlStreamReader xml(&file);
    const auto require = [&](bool holds) {
        if (!holds || xml.hasError()) {
            throw std::runtime_error(path.toStdString() + ", line " +
                                     std::to_string(xml.lineNumber()) + ": no property list");
        }
    };
    require(file.open(QIODevice::ReadOnly));
    require(xml.readNextStartElement() && xml.name() == u"plist");
    require(xml.attributes().value(QStringLiteral("version")) == u"1.0");
    require(xml.readNextStartElement() && xml.name() == u"dict");

    std::map<std::string, std::string> values;
    while (xml.readNextStartElement()) {
        require(xml.name() == u"key");
        const std::string key = xml.readElementText().toStdString();
        require(xml.readNextStartElement());
        const std::string kind = xml.name().toString().toStdString();
        const std::string text = xml.readElementText().toStdString();
        require(kind == "string" || kind == "true" || kind == "false");
        require(values.emplace(key, kind == "string" ? text : kind).second);
    }
    require(!xml.readNextStartElement());
    while (!xml.atEnd()) {
        xml.readNext();
    }
    require(!xml.hasError());
    return values;
}

class PropertyListTest : public testing::Test {
protected:
    const std::map<std::string, std::string> values = readPropertyList(PROPERTY_LIST);
};

TEST_F(PropertyListTest, IdentifiesTheApplicationWhosePreferencesHoldTheRegistry) {
    EXPECT_THAT(values, Contains(Pair("CFBundleIdentifier", "local.display-control")));
}

TEST_F(PropertyListTest, AgreesWithTheProjectOnTheVersion) {
    EXPECT_THAT(values, Contains(Pair("CFBundleShortVersionString", PROJECT_VERSION)));
    EXPECT_THAT(values, Contains(Pair("CFBundleVersion", PROJECT_VERSION)));
}

TEST_F(PropertyListTest, AgreesWithTheBuildOnTheOldestSystem) {
    EXPECT_STREQ(DEPLOYMENT_TARGET, "13.3");
    EXPECT_THAT(values, Contains(Pair("LSMinimumSystemVersion", DEPLOYMENT_TARGET)));
}

TEST_F(PropertyListTest, NamesTheProgramAndTheIconAsTheBundleHasThem) {
    EXPECT_THAT(values, Contains(Pair("CFBundleExecutable", "Tavrel")));
    EXPECT_THAT(values, Contains(Pair("CFBundleName", "Tavrel")));
    EXPECT_THAT(values, Contains(Pair("CFBundleIconFile", "Tavrel.icns")));
    EXPECT_THAT(values, Contains(Pair("CFBundlePackageType", "APPL")));
}

TEST_F(PropertyListTest, SaysThatTheApplicationDrawsInHighResolution) {
    EXPECT_THAT(values, Contains(Pair("NSHighResolutionCapable", "true")));
    EXPECT_THAT(values, Contains(Pair("NSPrincipalClass", "NSApplication")));
}

TEST_F(PropertyListTest, HasNoPlaceholderLeft) {
    for (const auto& [key, value] : values) {
        EXPECT_FALSE(value.empty()) << key;
        EXPECT_EQ(value.find_first_of("@$"), std::string::npos) << key << ": " << value;
    }
}

}  // namespace
}  // namespace tavrel
