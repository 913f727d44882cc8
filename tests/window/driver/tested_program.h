// The shipped window program, started in a folder of its own and operated from outside like a user.
//
// A test of the window reads like this (see window_test.h for the fixture):
//
//   TEST_F(CWindowTest, ConvertsAnImage) {
//       test::WriteWhole(m_folder / "game.iso", image);       // inputs, before or after the start
//       CDrivenDialog dialog = m_program.Start();             // the real quorn_vantrel.exe, a copy in m_folder
//       dialog.Choose(m_folder / "game.iso");                 // drops the file
//       dialog.Press(IDC_ISO_TO_CSO);
//       CDrivenBox box = WaitForBox(m_program, kConversion);
//       EXPECT_EQ(box.Text(), "...");
//       box.Close();
//       dialog.Press(IDC_EXIT);
//       EXPECT_EQ(m_program.WaitForEnd(), 0u);
//   }
//
// All waiting has a deadline. When it passes, CDriveFailure is thrown and fails the test.
#pragma once

#include <windows.h>

#include <string>

#include "tests/window/driver/boxes.h"
#include "tests/window/driver/main_dialog.h"
#include "tests/window/driver/poll.h"

namespace vantrel::test {

class CTestedProgram {
public:
    /// Copies quorn_vantrel.exe from the folder of the test program to `folder` (with its closing separator).
    explicit CTestedProgram(std::string folder);
    CTestedProgram(const CTestedProgram&) = delete;
    CTestedProgram& operator=(const CTestedProgram&) = delete;
    /// Terminates the program if it is still running.
    ~CTestedProgram();

    const std::string& Folder() const { return m_folder; }

    /// Starts the program in its own folder, like a double click, and waits for its dialog.
    CDrivenDialog Start() { return Start(m_folder); }
    /// Starts the program with another working folder.
    CDrivenDialog Start(const std::string& workingFolder);

    bool IsRunning() const;
    DWORD ProcessId() const { return m_processId; }
    HANDLE Process() const { return m_process; }
    /// Waits until the process has ended and returns its exit status.
    DWORD WaitForEnd(Milliseconds deadline = kSoon) const;

private:
    std::string m_folder;
    HANDLE m_process = nullptr;
    DWORD m_processId = 0;
};

}  // namespace vantrel::test
