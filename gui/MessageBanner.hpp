#pragma once
// One dismissible line above the map for the model's messages: a refused or failed scan
// (scanError) or an informational notice (locationNotice). A failure is shown before a
// notice; closing the banner clears both.

#include <QFrame>
#include <optional>
#include <string>

class QLabel;
class QToolButton;

namespace veldan::gui {

class MessageBanner final : public QFrame {
    Q_OBJECT

public:
    explicit MessageBanner(QWidget* parent = nullptr);

    void show(const std::optional<std::string>& error, const std::optional<std::string>& notice);
    QString text() const;

Q_SIGNALS:
    void dismissed();

private:
    QLabel* label_;
    QToolButton* close_;
};

}  // namespace veldan::gui
