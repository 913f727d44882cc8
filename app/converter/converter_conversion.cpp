#include "app/converter/converter_conversion.h"

#include <cstdint>

#include "app/converter/batch_line.h"
#include "files/checked_file.h"
#include "files/native_file.h"
#include "files/path.h"
#include "files/text_output.h"
#include "operation/progress.h"
#include "operation/text.h"
#include "raw/cd_image.h"
#include "raw/cue_sheet.h"
#include "raw/raw_sector.h"

namespace vantrel {

namespace {

constexpr const char* kDoneText = "Conversion iso2bin Done !";

void WriteText(CCheckedOutput& output, const std::string& text) {
    CTextOutput lines(output);
    lines.Write(text);
    lines.Flush();
    output.FinishOrFail();
}

/// One run of IsoToBinByConverter.
class CConverterConversion {
public:
    CConverterConversion(const std::string& folder, const std::string& fileName, CConverterRunner& runner,
                         COperation& operation)
        : m_folder(folder), m_imagePath(folder + fileName), m_runner(runner), m_operation(operation) {
        const std::string name = SplitPath(fileName).name;
        m_batchPath = m_folder + kBatchFileName;
        m_cuePath = m_folder + name + ".cue";
        m_call.inputName = name + ".iso";
        m_call.outputName = name + ".bin";
    }

    void Run() {
        m_operation.SetPane(EPane::Status, "Converting ISO2BIN, please Wait");
        Examine();
        m_operation.Begin(EConversion::IsoToBin);
        m_runner.PlaceConverter(m_folder);
        WriteBatchFileAndSheet();
        m_operation.SetTotal(m_sectors);
        Start();
        WaitForConverter();
        Finish();
    }

private:
    void Examine() {
        CCheckedInput image(m_operation);
        const SCdImage found = ExamineCdImage(m_imagePath, image, m_operation);
        m_sectors = found.Sectors();
        m_call.postgap = found.NeedsPostgap();
        m_lengthText = BytesText(static_cast<std::int32_t>(static_cast<std::uint32_t>(found.length)));
        m_operation.SetPane(EPane::Bytes, m_lengthText);
    }

    /// Both files are opened before either is written.
    void WriteBatchFileAndSheet() {
        CCheckedOutput batch(m_operation);
        CCheckedOutput cue(m_operation);
        batch.OpenOrFail(m_batchPath, EOutputManner::InPlace, "Code 101- Error Opening %s");
        cue.OpenOrFail(m_cuePath, EOutputManner::InPlace, "Code 102- Error Opening %s");
        WriteText(batch, BatchLineOf(m_call));
        WriteText(cue, CueSheetOf(m_call.outputName));
    }

    void Start() {
        if (IsBatchLineSafe(m_folder, m_call)) {
            m_runner.StartBatchFile(m_folder, kBatchFileName);
        } else {
            m_runner.StartConverter(m_folder, ArgumentsOf(m_call));
        }
    }

    /// The bar advances by one step per poll and starts again at its end. It shows that work is going on, not how much
    /// is done.
    void WaitForConverter() {
        bool finished = false;
        std::uint32_t counter = 0;
        while (!finished) {
            ShowPercent(m_operation, counter, m_sectors);
            ++counter;
            m_operation.SetDone(counter);
            m_operation.SetPane(EPane::Bytes, m_lengthText);
            if (counter >= m_sectors) {
                counter = 0;
                ShowPercent(m_operation, 0, m_sectors);
                m_operation.SetDone(0);
            }
            finished = m_runner.HasFinished();
            m_operation.Yield();
        }
    }

    void Finish() {
        m_operation.SetDone(m_sectors);
        ShowPercent(m_operation, m_sectors, m_sectors);
        RemoveFile(m_batchPath);
        m_runner.RemoveConverter(m_folder);
        m_operation.SetPane(EPane::Status, kDoneText);
        if (m_operation.Complete(kDoneText)) {
            const auto rawSize = static_cast<std::int32_t>(m_sectors * static_cast<std::uint32_t>(kRawSectorSize));
            m_operation.SetPane(EPane::Status, kDoneText);
            m_operation.SetPane(EPane::File, m_call.outputName);
            m_operation.SetPane(EPane::Bytes, BytesText(rawSize));
        }
    }

    std::string m_folder;
    std::string m_imagePath;
    std::string m_batchPath;
    std::string m_cuePath;
    SConverterCall m_call;
    std::string m_lengthText;
    std::uint32_t m_sectors = 0;
    CConverterRunner& m_runner;
    COperation& m_operation;
};

}  // namespace

void IsoToBinByConverter(const std::string& folder, const std::string& fileName, CConverterRunner& runner,
                         COperation& operation) {
    CConverterConversion(folder, fileName, runner, operation).Run();
}

}  // namespace vantrel
