// The context menu's desktop actions reach real helpers: a file manager on a private
// D-Bus session gets the item's exact bytes, and without one xdg-open gets its folder.

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <QClipboard>
#include <QDBusConnection>
#include <QGuiApplication>
#include <QMimeData>
#include <QProcess>
#include <QStringList>

#include "gui/DesktopServices.hpp"
#include "tests/gui/GuiTestSupport.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan::gui {
namespace {

// A stand-in file manager that records what it was asked to show.
class FakeFileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList shown;

public Q_SLOTS:
    void ShowItems(const QStringList& uris, const QString&) { shown += uris; }
};

// A session bus of this test alone.
class PrivateBus {
public:
    PrivateBus() {
        daemon_.start(QStringLiteral("dbus-daemon"),
                      {QStringLiteral("--session"), QStringLiteral("--nofork"),
                       QStringLiteral("--print-address")});
        daemon_.waitForReadyRead(10000);
        address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
    }
    ~PrivateBus() {
        for (const auto& name : names_)
            QDBusConnection::disconnectFromBus(name);
        daemon_.kill();
        daemon_.waitForFinished();
    }
    QDBusConnection connect(const QString& name) {
        names_ << name;
        return QDBusConnection::connectToBus(address_, name);
    }

private:
    QProcess daemon_;
    QString address_;
    QStringList names_;
};

class DesktopServicesTest : public ::testing::Test {
protected:
    void SetUp() override {
        // xdg-open writes what it was given where the test reads it.
        test::makeFolders(bin.path());
        test::writeFile(bin / "xdg-open",
                        "#!/bin/sh\nprintf '%s\\n' \"$@\" >> '" + bin / "calls" + "'\n");
        ::chmod((bin / "xdg-open").c_str(), 0755);
        environment.set("PATH", bin.path() + ":" + std::getenv("PATH"));
    }
    std::string xdgOpenCalls() {
        test::waitUntil([&] { return test::exists(bin / "calls"); });
        return test::exists(bin / "calls") ? test::readFile(bin / "calls") : "";
    }

    test::TempDir bin;
    test::ScopedEnvironment environment;
    PrivateBus bus;
};

const std::string oddPath = "/home/ana/caf\xC3\xA9 'x'/bad\xFF name";

TEST_F(DesktopServicesTest, TheFileManagerIsAskedToShowTheItemByItsExactBytes) {
    FakeFileManager manager;
    QDBusConnection service = bus.connect(QStringLiteral("service"));
    ASSERT_TRUE(service.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &manager,
                                       QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(service.registerService(QStringLiteral("org.freedesktop.FileManager1")));

    DesktopServices::showInFileManager(oddPath, bus.connect(QStringLiteral("client")));
    ASSERT_TRUE(test::waitUntil([&] { return !manager.shown.isEmpty(); }));
    EXPECT_EQ(manager.shown, QStringList{"file:///home/ana/caf%C3%A9%20%27x%27/bad%FF%20name"});
    EXPECT_FALSE(test::exists(bin / "calls"));
}

TEST_F(DesktopServicesTest, WithoutAFileManagerTheFolderOpensAndOpenUsesTheDefaultApplication) {
    DesktopServices::showInFileManager(oddPath, bus.connect(QStringLiteral("client")));
    EXPECT_EQ(xdgOpenCalls(), "file:///home/ana/caf%C3%A9%20%27x%27\n");
    ::unlink((bin / "calls").c_str());
    EXPECT_EQ(DesktopServices::open(oddPath), std::nullopt);
    EXPECT_EQ(xdgOpenCalls(), "file:///home/ana/caf%C3%A9%20%27x%27/bad%FF%20name\n");

    DesktopServices::copyPath(oddPath);
    const QMimeData* copied = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(copied, nullptr);
    EXPECT_EQ(copied->data("text/uri-list").toStdString(),
              "file:///home/ana/caf%C3%A9%20%27x%27/bad%FF%20name\r\n");
    EXPECT_TRUE(copied->text().startsWith(QStringLiteral("/home/ana/café 'x'/bad")));
}

}  // namespace
}  // namespace veldan::gui

#include "DesktopServicesTest.moc"
