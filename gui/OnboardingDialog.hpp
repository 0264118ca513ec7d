#pragma once
// The first run: what the map shows, that nothing is ever deleted outright, that
// everything stays on this computer (with the offer of the daily check), and the first
// scan, of the home folder or the startup disk. The step shown is kept in
// "veldanOnboardingStep", so a closed window resumes where it was; finishing sets
// "veldanDidCompleteOnboarding".

#include <QDialog>

class QCheckBox;
class QLabel;
class QPushButton;
class QStackedWidget;

namespace veldan::gui {

class OnboardingDialog final : public QDialog {
    Q_OBJECT

public:
    static constexpr const char* stepKey = "veldanOnboardingStep";
    static constexpr const char* completedKey = "veldanDidCompleteOnboarding";
    static constexpr const char* dailyCheckKey = "veldanDailyTrackingEnabled";
    enum class FirstScan { homeFolder, startupDisk };

    explicit OnboardingDialog(QWidget* parent = nullptr);

    int step() const;
    int stepCount() const;
    void showStep(int step);

Q_SIGNALS:
    // The last step was finished with the chosen first scan.
    void finishedWith(FirstScan scan);

private:
    QStackedWidget* pages_;
    QLabel* counter_;
    QPushButton* back_;
    QPushButton* next_;
    QCheckBox* dailyCheck_;
};

}  // namespace veldan::gui
