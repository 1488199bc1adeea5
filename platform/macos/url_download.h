// URLDownload is NSURLDownload.
#pragma once
#import <Foundation/Foundation.h>

@compatibility_alias URLDownload NSURLDownload;
