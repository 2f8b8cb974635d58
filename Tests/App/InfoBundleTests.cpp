#include "Quillmere/Platform/Linux/Desktop/InfoBundle.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/stat.h>

namespace quillmere {

namespace {

class InfoBundleTest : public testing::Test {
protected:
    QString path() const { return directory_.filePath("Info.json"); }

    InfoBundle holding(const QByteArray& bytes) const {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        file.close();
        return InfoBundle(path());
    }

private:
    QTemporaryDir directory_;
};

}  // namespace

TEST_F(InfoBundleTest, GivesTheTextUnderAKey) {
    const InfoBundle bundle = holding(R"({"feed": "https://example.org/feed.json", "name": "Квілмер"})");
    EXPECT_EQ(bundle.string("feed"), "https://example.org/feed.json");
    EXPECT_EQ(bundle.string("name"), "Квілмер");
}

TEST_F(InfoBundleTest, AMissingKeyIsNoValue) {
    EXPECT_EQ(holding(R"({"feed": "x"})").string("other"), std::nullopt);
    EXPECT_EQ(holding(R"({"feed": "x"})").string(""), std::nullopt);
}

TEST_F(InfoBundleTest, AKeyOfAnotherTypeIsNoValueAndLeavesTheOthersAlone) {
    for (const char* value : {"1", "1.5", "true", "null", "[\"x\"]", "{\"feed\": \"x\"}"}) {
        SCOPED_TRACE(value);
        const InfoBundle bundle = holding(QByteArray("{\"feed\": ") + value + ", \"version\": \"1.0\"}");
        EXPECT_EQ(bundle.string("feed"), std::nullopt);
        EXPECT_EQ(bundle.string("version"), "1.0");
    }
}

TEST_F(InfoBundleTest, AnEmptyTextIsAText) {
    EXPECT_EQ(holding(R"({"feed": ""})").string("feed"), "");
}

TEST_F(InfoBundleTest, AMalformedFileHasNoKeys) {
    const QByteArray good = R"({"feed": "x"})";
    const std::vector<QByteArray> malformed = {
        "",
        "{",
        "feed = x",
        "[\"feed\", \"x\"]",
        "\"feed\"",
        good.chopped(1),
        good + "rubbish",
        QByteArray("{\"feed\": \"\xff\xfe\"}"),
        QByteArray(200'000, '['),
        QByteArray(1'000, '\0'),
    };
    for (const QByteArray& bytes : malformed) {
        SCOPED_TRACE(bytes.left(40).toStdString());
        EXPECT_EQ(holding(bytes).string("feed"), std::nullopt);
    }
}

TEST_F(InfoBundleTest, AFileLargerThanAnyInformationFileHasNoKeys) {
    const QByteArray padding(qsizetype{64} * 1024, ' ');
    EXPECT_EQ(holding("{\"feed\": \"x\"}" + padding).string("feed"), std::nullopt);
}

TEST_F(InfoBundleTest, AMissingFileHasNoKeys) {
    EXPECT_EQ(InfoBundle(path()).string("feed"), std::nullopt);
    EXPECT_EQ(InfoBundle(QString()).string("feed"), std::nullopt);
}

TEST_F(InfoBundleTest, ADirectoryInTheFilesPlaceHasNoKeys) {
    EXPECT_EQ(InfoBundle(QFileInfo(path()).path()).string("feed"), std::nullopt);
}

TEST_F(InfoBundleTest, APipeInTheFilesPlaceDoesNotHoldTheProgramUp) {
    ASSERT_EQ(mkfifo(qPrintable(path()), 0600), 0);
    EXPECT_EQ(InfoBundle(path()).string("feed"), std::nullopt);
}

TEST(InfoBundle, LiesBesideTheRealProgramFile) {
    const QString program = QFileInfo("/proc/self/exe").canonicalPath();
    EXPECT_EQ(InfoBundle::pathBesideProgram(), QFileInfo(program).path() + "/share/quillmere/Info.json");
}

TEST(InfoBundle, TheBuildTreesFileNamesTheVersionThatWasBuilt) {
    const InfoBundle bundle;
    EXPECT_EQ(bundle.string("CFBundleShortVersionString"), QUILLMERE_TEST_VERSION);
}

TEST(InfoBundle, TheBuildTreesFileNamesTheFeedThatTheBuildWasGivenAndNoneByDefault) {
    const QByteArray feed = QUILLMERE_TEST_FEED;
    EXPECT_EQ(InfoBundle().string("QuillmereUpdateFeed"),
              feed.isEmpty() ? std::nullopt : std::optional(feed.toStdString()));
}

}  // namespace quillmere
