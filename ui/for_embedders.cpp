#include "ui/for_embedders.h"

#include "support/platform.h"
#include "ui/splash.h"
#include "ui/splash_state.h"

namespace quillory::splash {

void hideProgress() {
  if (progressPercent != kProgressHidden) setFrameSizeWithoutBar();
  progressPercent = kProgressHidden;
  platformCalls.window.requestRedraw();
}

int getSplashBuffer() { return splashBuffer; }

}  // namespace quillory::splash
