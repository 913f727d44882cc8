#include "app/sound/completion_sound.h"

#include "app/message_box.h"
#include "app/sound/wave_player.h"

namespace vantrel {
namespace {

constexpr wchar_t kSoundErrorSuffix[] = L"\n[An Error Occured Attempting to play sound]";

}  // namespace

void PlayCompletionSound(HWND owner, const std::wstring& path, const std::wstring& message) {
    CWavePlayer* player = CreatePlayer(path, false);
    ShowMessage(owner, player != nullptr ? message : message + kSoundErrorSuffix);
    DestroyPlayer(player);
}

}  // namespace vantrel
