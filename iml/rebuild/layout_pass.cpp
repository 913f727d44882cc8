#include "iml/rebuild/layout_pass.h"

#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

void CLayoutPass::Run() {
    m_operation.SetPane(EPane::Status, "Rebuilding ISO, please Wait");
    DisableFrameCommands(m_operation);
    OpenFiles();
    CheckMedia();
    ReadHead();
    Reopen();
    ListFiles();
}

void CLayoutPass::Open(CInputFile& file, const char* code) {
    if (!file.Open(m_request.layoutPath)) {
        m_operation.Fail(Format("%s - Error Opening %s", code, m_request.layoutPath.c_str()));
    }
}

void CLayoutPass::OpenFiles() {
    if (!m_rules.isDvd) {
        Open(m_bytes, "Code 2011a");
    }
    Open(m_text, "Code 2011");
    if (!m_lists.EntryList().Create()) {
        m_operation.Fail(Format("Code 202 - Error Opening %s", m_request.entryListPath.c_str()));
    }
    if (!m_lists.Bounds().Create()) {
        m_operation.Fail(Format("Code 2021 - Error Opening %s", m_request.boundsPath.c_str()));
    }
    if (m_rules.isDvd) {
        Open(m_bytes, "Code 2021a");
    }
}

void CLayoutPass::CheckMedia() {
    const char letter = MediaLetterOf(m_bytes);
    if (m_rules.isDvd && !IsDvdLetter(letter)) {
        m_operation.Fail("Error dvd !!!!!!!! This is not DVD verson of iml file");
    }
    if (!m_rules.isDvd && !IsCdLetter(letter)) {
        m_operation.Fail("Error cd!!!!!!!! This is not CD verson of iml file");
    }
}

void CLayoutPass::ReadHead() {
    const std::int64_t length = m_bytes.Size();
    const std::optional<std::int64_t> position = FindListHead(m_bytes, m_rules.hashes);
    m_bytes.Close();
    const std::optional<SListHead> head = position ? ReadListHead(m_text, *position, m_line) : std::nullopt;
    m_text.Close();
    if (IsCareful() && (m_bytes.HasFailed() || m_text.HasFailed())) {
        m_operation.Fail(Format("Cannot read all of %s", m_request.layoutPath.c_str()));
    }
    if (!head) {
        m_operation.Fail(Format("The layout %s has no list of files", m_request.layoutPath.c_str()));
    }
    if (head->entries > length) {
        m_operation.Fail(
            Format("The number of entries in the layout %s is larger than the file", m_request.layoutPath.c_str()));
    }
    m_head = *head;
    m_announced = static_cast<std::int64_t>(m_head.entries) - m_rules.unplaced;
    if (IsCareful() && m_announced < 0) {
        m_operation.Fail(Format("The layout %s has no number of entries", m_request.layoutPath.c_str()));
    }
    if (IsCareful() && (m_head.leadingLast < 0 || !LooksLikeEntry(m_line))) {
        m_operation.Fail(Format("The layout %s has no entry of its leading structures", m_request.layoutPath.c_str()));
    }
}

void CLayoutPass::Reopen() {
    // The window opens the layout for updating too, so a layout that may not be written is refused there.
    const bool updates = IsCareful() || m_update.Open(m_request.layoutPath, EOpenMode::ReadWrite, ESharing::Anyone);
    if (!updates || !m_text.Open(m_request.layoutPath)) {
        m_operation.Fail(Format("Code 2012 - Error Opening %s", m_request.layoutPath.c_str()));
    }
}

void CLayoutPass::ListFiles() {
    const auto behindLeading = static_cast<std::uint32_t>(m_head.leadingLast) + 1;
    m_lists.BeginBehind(behindLeading < kSectorLimit ? behindLeading : 1);
    CTextReader text = TextOf(m_text, m_head.entriesPosition);
    bool complete = true;
    for (std::int64_t i = 0; i < m_announced && complete; ++i) {
        complete = ListFile(text);
    }
    if (complete && IsCareful()) {
        CheckEnd(text);
    }
    CheckWritten(m_lists.EndWriting());
    m_text.Close();
    m_update.Close();
}

bool CLayoutPass::ListFile(CTextReader& text) {
    CheckLine(text.ReadLine(m_line));
    const std::optional<SListedFile> file = ListedFileOf(m_line);
    if (!file) {
        CheckListEnds();
        return false;
    }
    CheckSectors(*file);
    CheckWritten(m_lists.Append(*file));
    m_operation.PumpMessages();
    return true;
}

void CLayoutPass::CheckLine(bool wasRead) {
    if (!IsCareful()) {
        return;
    }
    if (!wasRead || m_text.HasFailed()) {
        m_operation.Fail(Format("The layout %s ends before the last of its entries", m_request.layoutPath.c_str()));
    }
    if (!LooksLikeEntry(m_line)) {
        RefuseLine();
    }
}

void CLayoutPass::CheckListEnds() {
    // A name of one character without its closing quote has the length of an empty name.
    if (IsCareful() && !m_line.Text().ends_with('"')) {
        RefuseLine();
    }
}

void CLayoutPass::RefuseLine() {
    const std::string line(m_line.Text());
    m_operation.Fail(
        Format("The layout %s has a line that is no entry: %s", m_request.layoutPath.c_str(), line.c_str()));
}

void CLayoutPass::CheckSectors(const SListedFile& file) {
    const auto isOnDisc = [](std::int32_t sector) { return static_cast<std::uint32_t>(sector) < kSectorLimit; };
    if (!isOnDisc(file.first) || !isOnDisc(file.last)) {
        m_operation.Fail(Format("The layout %s puts %s where no disc has a sector", m_request.layoutPath.c_str(),
                                file.path.c_str()));
    }
}

void CLayoutPass::CheckEnd(CTextReader& text) {
    for (std::int32_t i = 1; i < m_rules.unplaced; ++i) {
        CheckLine(text.ReadLine(m_line));
    }
    if (text.ReadLine(m_line) && LooksLikeEntry(m_line)) {
        m_operation.Fail(
            Format("The layout %s lists more entries than its number of entries", m_request.layoutPath.c_str()));
    }
}

void CLayoutPass::CheckWritten(bool written) {
    if (!written) {
        m_operation.Fail(m_lists.FailureText());
    }
}

}  // namespace vantrel
