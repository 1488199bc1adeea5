// LibTomCrypt, without a macro of it that has a name which other headers use.
#pragma once
#include <tomcrypt.h>

#undef byte
