// The fixture of the window tests: a main window and an empty folder per test, a user who presses keys and answers
// dialogs, and a gate that holds the calculation thread between two iterations.
//
// Every wait has a bound; a dialog that stands open when it should not is closed and fails the test.
#pragma once

#include <QDialog>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>
#include <functional>
#include <list>
#include <memory>
#include <set>

#include "frontend/desktop/main_window.h"
#include "support/problem.h"

namespace kaldra {

// Presses keys one after the other, as "Alt+F" or "O", in the window of a widget.
void Press(QWidget& widget, const QStringList& keys);
void Click(QWidget& widget);

// Answers modal dialogs, by the names of their objects, in the order in which they are announced.
class User : public QObject {
public:
    using Answer = std::function<void(QDialog&)>;

    User();

    void Meets(const QString& name, Answer answer);
    // A message box with this text, which is then closed by its default button.
    void Reads(const QString& text);
    [[nodiscard]] bool HasMetAll() const { return meetings_.empty(); }
    // The end of a test: true when all dialogs have come and none stands open.
    [[nodiscard]] bool MetAll();

private:
    void Look();
    void GiveUp();

    struct Meeting {
        QString name;
        Answer answer;
    };
    std::list<Meeting> meetings_;
    QElapsedTimer waited_;
    bool gaveUp_ = false;
};

// Holds the calculation thread behind an iteration, counted from 1 over the whole run.
struct Gate {
    static void HoldBehind(int iteration);
    [[nodiscard]] static bool Holds();
    // Lets it go on, up to the end of the run or behind so many more iterations.
    static void Open(int nextHold = 0);
};

class WindowTest : public QObject {
    Q_OBJECT

protected:
    // A column with a conductivity that depends on temperature: four iterations each step. No steps: steady state.
    static Problem SlowColumn(int steps);
    static Problem FailingColumn();  // its second element is turned inside out

    QString Write(const QString& name, const std::string& bytes) const;
    [[nodiscard]] QString Path(const QString& name) const { return folder_->filePath(name); }
    [[nodiscard]] bool Exists(const QString& name) const { return QFile::exists(Path(name)); }

    // Opens a problem as case.kdr, as a file that the command line names.
    void OpenProblem(const Problem& problem);
    [[nodiscard]] QStringList Lines() const;
    [[nodiscard]] QString Label(int id) const;
    [[nodiscard]] QPushButton& Button(int id) const;
    [[nodiscard]] std::set<int> EnabledItems() const;  // of the menu, without those of Help, and of the buttons
    // Starts the open document by the keyboard.
    void Start();
    void StartAndHold(int iteration);  // and waits until its thread stands behind this iteration
    void OpenFinishedRun(int steps);   // of SlowColumn
    [[nodiscard]] bool IsDone() const { return !Lines().isEmpty() && Lines().last() == "Done."; }

    std::unique_ptr<MainWindow> window;
    std::unique_ptr<User> user;

private Q_SLOTS:
    void init();
    void cleanup();

private:
    std::unique_ptr<QTemporaryDir> folder_;
};

// Runs the test functions of `test` as the program would run its windows.
int RunWindowTests(int argc, char** argv, QObject& test);

}  // namespace kaldra
