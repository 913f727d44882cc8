#include "iml/rebuild/layout_pass.h"

#include "iso/iso9660.h"
#include "operation/text.h"

namespace vantrel {

void CLayoutPass::Run() {
    m_operation.SetPane(EPane::Status, "Rebuilding ISO, please Wait");
    m_operation.Begin(m_shape.isDvd ? EConversion::ImlToDvdImage : EConversion::ImlToCdImage);
    OpenFiles();
    CheckMedia();
    ReadHead();
    CheckHead();
    Reopen();
    ListFiles();
}

void CLayoutPass::OpenFiles() {
    if (!m_shape.isDvd) {
        m_bytes.OpenOrFail(m_request.layoutPath, "Code 2011a - Error Opening %s");
    }
    m_text.OpenOrFail(m_request.layoutPath, "Code 2011 - Error Opening %s");
    m_placements.CreateFiles();
    if (m_shape.isDvd) {
        m_bytes.OpenOrFail(m_request.layoutPath, "Code 2021a - Error Opening %s");
    }
}

void CLayoutPass::CheckMedia() {
    const char letter = MediaLetterOf(m_bytes);
    if (m_shape.isDvd && !IsDvdLetter(letter)) {
        m_operation.Fail("Error dvd !!!!!!!! This is not DVD verson of iml file");
    }
    if (!m_shape.isDvd && !IsCdLetter(letter)) {
        m_operation.Fail("Error cd!!!!!!!! This is not CD verson of iml file");
    }
}

void CLayoutPass::ReadHead() {
    const std::int64_t length = m_bytes.Size();
    const std::optional<std::int64_t> position = FindListHead(m_bytes, m_shape.hashes);
    m_bytes.Close();
    const std::optional<SListHead> head = position ? ReadListHead(m_text, *position, m_line) : std::nullopt;
    m_text.Close();
    if (m_request.strict) {
        m_bytes.FailIfUnread();
        m_text.FailIfUnread();
    }
    if (!head) {
        Refuse("The layout %s has no list of files");
    }
    if (head->entries > length) {
        Refuse("The number of entries in the layout %s is larger than the file");
    }
    m_head = *head;
    m_announced = static_cast<std::int64_t>(m_head.entries) - m_shape.unplaced;
}

void CLayoutPass::CheckHead() {
    if (m_request.strict && m_announced < 0) {
        Refuse("The layout %s has no number of entries");
    }
    if (m_request.strict && (m_head.leadingLast < 0 || !LooksLikeEntry(m_line))) {
        Refuse("The layout %s has no entry of its leading structures");
    }
}

void CLayoutPass::Reopen() {
    // The window opens the layout for updating too, so it refuses a write-protected layout.
    const bool updates =
        m_request.strict || m_update.Open(m_request.layoutPath, EOpenMode::ReadWrite, ESharing::Anyone);
    if (!updates || !m_text.Open(m_request.layoutPath)) {
        Refuse("Code 2012 - Error Opening %s");
    }
}

void CLayoutPass::ListFiles() {
    const auto behindLeading = static_cast<std::uint32_t>(m_head.leadingLast) + 1;
    m_placements.StartBehind(behindLeading < kSectorLimit ? behindLeading : 1);
    CTextReader text = TextReaderOf(m_text, m_head.entriesPosition);
    bool complete = true;
    for (std::int64_t i = 0; i < m_announced && complete; ++i) {
        complete = ListFile(text);
    }
    m_placements.FinishFiles();
    m_text.Close();
    m_update.Close();
}

bool CLayoutPass::ListFile(CTextReader& text) {
    if (!text.ReadLine(m_line) && m_request.strict) {
        m_text.FailIncomplete();
    }
    const std::optional<SListedFile> file = ListedFileOf(m_line);
    if (!file) {
        return false;
    }
    CheckSectors(*file);
    m_placements.Append(*file);
    m_operation.Yield();
    return true;
}

void CLayoutPass::CheckSectors(const SListedFile& file) {
    const auto isOnDisc = [](std::int32_t sector) { return static_cast<std::uint32_t>(sector) < kSectorLimit; };
    if (!isOnDisc(file.first) || !isOnDisc(file.last)) {
        m_operation.Fail(Format("The layout %s puts %s at a sector that exists on no disc",
                                m_request.layoutPath.c_str(), file.path.c_str()));
    }
}

void CLayoutPass::Refuse(const char* pattern) {
    m_operation.Fail(Format(pattern, m_request.layoutPath.c_str()));
}

}  // namespace vantrel
