// The splash window: its state, sizes and animation, without a platform call. What is to be done on
// a screen goes through splashWindowCalls; the platform layer carries it out on the main thread,
// whatever thread called. Without a display the state changes all the same and nothing is shown.
#pragma once

namespace quillory::splash {

void init();
void configureSplash(const char* path);
void showSplash();
void setProgress(int value);
void hideProgress();
void hideSplash();
void cleanup();

void setSplashBuffer(int pixels);
int getSplashBuffer();

void setFrameSize(int width, int height);
void setFrameSizeWithoutBar();
void setFrameSizeWithBar();

}  // namespace quillory::splash
