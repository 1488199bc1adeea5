// URL downloads, of the class that this system has for them.
#pragma once
#import <Foundation/Foundation.h>

namespace quillory::platform {

/// NSURLDownload where the system still has it, else SessionDownload, which does the same. By its
/// name: a class that the image asks for and that a future system lacks would keep the whole
/// launcher from being loaded.
Class urlDownloadClass();

}  // namespace quillory::platform
