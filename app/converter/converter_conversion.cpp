// The conversion through the converter program.
#include "raw/iso_to_bin.h"

#include <cstdint>

#include "files/input_file.h"
#include "files/path.h"
#include "files/text_output.h"
#include "operation/progress.h"
#include "operation/text.h"
#include "app/converter/batch_line.h"
#include "raw/cd_image.h"
#include "raw/cue_sheet.h"
#include "raw/raw_sector.h"

namespace vantrel {

namespace {

constexpr const char* kDoneText = "Conversion iso2bin Done !";

/// One run of IsoToBin.
class CBinConversion {
public:
    CBinConversion(const SIsoToBinRequest& request, CConverterRunner& runner, COperation& operation)
        : m_folder(request.folder),
          m_imagePath(request.folder + request.fileName),
          m_runner(runner),
          m_operation(operation) {
        const std::string name = SplitPath(request.fileName).name;
        m_batchPath = m_folder + kBatchFileName;
        m_cuePath = m_folder + name + ".cue";
        m_call.inputName = name + ".iso";
        m_call.outputName = name + ".bin";
    }

    void Run() {
        m_operation.SetPane(EPane::Status, "Converting ISO2BIN, please Wait");
        Examine();
        DisableCommands(m_operation, {ECommand::IsoToIml, ECommand::Vantrel, ECommand::IsoToBin, ECommand::BinToIso,
                                      ECommand::IsoToDax, ECommand::DaxToIso, ECommand::Browse, ECommand::CheckPostgap,
                                      ECommand::IsoToCso, ECommand::CsoToIso});
        m_runner.PlaceConverter(m_folder);
        WriteBatchFileAndSheet();
        m_operation.StartProgress(ProgressRange(m_sectors), EProgressFill::Dvd);
        Start();
        WaitForConverter();
        Finish();
    }

private:
    void Examine() {
        CInputFile image;
        const SCdImage found = ExamineCdImage(m_imagePath, image, m_operation);
        m_sectors = found.Sectors();
        m_call.postgap = found.NeedsPostgap();
        m_lengthText = BytesText(static_cast<std::int32_t>(static_cast<std::uint32_t>(found.length)));
        m_operation.SetPane(EPane::Bytes, m_lengthText);
    }

    void WriteBatchFileAndSheet() {
        COutputFile batch;
        COutputFile cue;
        if (!batch.Open(m_batchPath, EOutputManner::InPlace)) {
            m_operation.Fail(Format("Code 101- Error Opening %s", m_batchPath.c_str()));
        }
        if (!cue.Open(m_cuePath, EOutputManner::InPlace)) {
            m_operation.Fail(Format("Code 102- Error Opening %s", m_cuePath.c_str()));
        }
        WriteText(batch, BatchLineOf(m_call));
        WriteText(cue, CueSheetOf(m_call.outputName));
    }

    void WriteText(COutputFile& output, const std::string& text) {
        CTextOutput lines(output);
        lines.Write(text);
        lines.Flush();
        if (!output.Finish()) {
            m_operation.Fail(output.FailureText());
        }
    }

    void Start() {
        if (IsBatchLineSafe(m_folder, m_call)) {
            m_runner.StartBatchFile(m_folder, kBatchFileName);
        } else {
            m_runner.StartConverter(m_folder, ArgumentsOf(m_call));
        }
    }

    /// The bar goes round as long as the converter works: one step for each look at it.
    void WaitForConverter() {
        bool finished = false;
        std::uint32_t counter = 0;
        while (!finished) {
            m_operation.SetPane(EPane::Percent, PercentText(PercentOf(counter, m_sectors)));
            m_operation.StepProgress();
            ++counter;
            m_operation.SetPane(EPane::Bytes, m_lengthText);
            if (counter >= m_sectors) {
                counter = 0;
                m_operation.SetPane(EPane::Percent, "0%");
                m_operation.SetProgressPosition(0);
            }
            finished = m_runner.HasFinished();
            m_operation.PumpMessages();
        }
    }

    void Finish() {
        m_operation.SetProgressPosition(ProgressRange(m_sectors));
        m_operation.SetPane(EPane::Percent, "100%");
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

void IsoToBin(const SIsoToBinRequest& request, CConverterRunner& runner, COperation& operation) {
    CBinConversion(request, runner, operation).Run();
}

}  // namespace vantrel
