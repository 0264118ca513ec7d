// The part of PNG rendering that needs Qt Gui and Qt Svg. It is built as a module that
// the program loads only when it draws a PNG: linking those libraries (and the dozens
// they pull in) into every run of the command costs memory and start-up time that a
// scan never uses.

#include <QBuffer>
#include <QByteArray>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace {

// Text needs Qt's font database, which only exists with a GUI application object.
class HeadlessApplication {
public:
    HeadlessApplication() {
        if (QCoreApplication::instance() == nullptr) {
            application_ = std::make_unique<QGuiApplication>(argc_, argv_);
        }
    }

private:
    int argc_ = 3;
    char name_[7] = "veldan";
    char option_[10] = "-platform";
    char platform_[10] = "offscreen";
    char* argv_[4] = {name_, option_, platform_, nullptr};
    std::unique_ptr<QGuiApplication> application_;
};

// Qt reports environment details (a missing runtime folder, unknown SVG properties) that
// say nothing about the picture; they must not reach the command's error stream.
class QuietMessages {
public:
    QuietMessages() : previous_(qInstallMessageHandler(&drop)) {}
    ~QuietMessages() { qInstallMessageHandler(previous_); }
    QuietMessages(const QuietMessages&) = delete;
    QuietMessages& operator=(const QuietMessages&) = delete;

private:
    static void drop(QtMsgType, const QMessageLogContext&, const QString&) {}
    QtMessageHandler previous_;
};

std::optional<std::string> render(std::string_view svg, int width, int height) {
    if (width <= 0 || height <= 0) return std::nullopt;
    QuietMessages quiet;
    HeadlessApplication application;
    QSvgRenderer renderer(QByteArray(svg.data(), static_cast<qsizetype>(svg.size())));
    if (!renderer.isValid()) return std::nullopt;
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) return std::nullopt;
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                               QPainter::SmoothPixmapTransform);
        renderer.render(&painter);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG")) return std::nullopt;
    return std::string(bytes.constData(), static_cast<size_t>(bytes.size()));
}

}  // namespace

// The module's one entry point, with a C interface so that no C++ type crosses the
// boundary. On success `*png` is allocated with malloc and the caller frees it.
extern "C" __attribute__((visibility("default"))) int veldanRenderSvgToPng(
    const char* svg, size_t svgSize, int width, int height, char** png, size_t* pngSize) {
    auto rendered = render(std::string_view(svg, svgSize), width, height);
    if (!rendered) return 0;
    *png = static_cast<char*>(std::malloc(rendered->size()));
    if (*png == nullptr) return 0;
    std::memcpy(*png, rendered->data(), rendered->size());
    *pngSize = rendered->size();
    return 1;
}
