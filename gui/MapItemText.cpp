#include "gui/MapItemText.hpp"

#include <algorithm>

#include "app/MapPictureStyle.hpp"
#include "app/SvgText.hpp"
#include "layout/TileContent.hpp"
#include "platform/Wording.hpp"
#include "scan/SizeText.hpp"

namespace veldan::gui {

namespace {

QString fromStd(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

QString MapItemText::display(std::string_view raw) {
    return fromStd(SvgText::clean(raw));
}

QString MapItemText::name(const DiskNode& node) {
    return display(node.name.empty() ? node.path : node.name);
}

QString MapItemText::sizeAndShare(const DiskNode& node, const MapContent& content) {
    return fromStd(SizeText::string(node.bytes)) + QStringLiteral(" · ") +
           fromStd(SizeText::share(node.bytes, content.total()));
}

QString MapItemText::toolTip(const DiskNode& node, const MapContent& content) {
    QString text = QStringLiteral("<b>%1</b><br>%2")
                       .arg(name(node).toHtmlEscaped(), sizeAndShare(node, content));
    if (content.isFreeSpace(&node)) {
        return text + QStringLiteral("<br>Available on this disk");
    }
    const std::string& path = node.isSummary ? content.folder()->path : node.path;
    text += QStringLiteral("<br><span style=\"opacity:0.7\">%1</span>")
                .arg(display(path).toHtmlEscaped());
    // The tile's own help text: what a click does, what a grouped item is.
    const MapTile tile{&node, {}, 0};
    const auto tileContent =
        TileContent::of(tile, content.scanFinished(), MapPictureStyle::opaqueKind(node));
    if (!tileContent.shortLabel.empty() && !node.isSummary) {
        text += QStringLiteral("<br>") + fromStd(tileContent.shortLabel).toHtmlEscaped();
    }
    if (!tileContent.helpText.empty()) {
        text += QStringLiteral("<br><i>") +
                fromStd(platform::localWording(tileContent.helpText)).toHtmlEscaped() +
                QStringLiteral("</i>");
    }
    return text;
}

QString MapItemText::spoken(const DiskNode& node, const MapContent& content) {
    QString share = fromStd(SizeText::share(node.bytes, content.total()));
    share.replace(QStringLiteral("<"), QStringLiteral("less than "));
    share.replace(QStringLiteral("%"), QStringLiteral(" percent"));
    return QStringLiteral("%1, %2, %3")
        .arg(name(node), fromStd(SizeText::string(node.bytes)), share);
}

QString MapItemText::largestItems(const MapContent& content, size_t count) {
    std::vector<const DiskNode*> items;
    for (const auto* item : content.items()) {
        if (item->bytes > 0) items.push_back(item);
    }
    std::stable_sort(items.begin(), items.end(),
                     [](const DiskNode* a, const DiskNode* b) { return a->bytes > b->bytes; });
    if (items.size() > count) items.resize(count);
    QStringList parts;
    for (const auto* item : items)
        parts << spoken(*item, content);
    return parts.isEmpty() ? QStringLiteral("No items")
                           : QStringLiteral("Largest items: ") + parts.join(QStringLiteral("; "));
}

}  // namespace veldan::gui
