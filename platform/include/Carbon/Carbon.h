#pragma once

#include <Carbon/AppleEvents.h>
#include <Carbon/Dialogs.h>
#include <Carbon/Files.h>
#include <Carbon/MacMemory.h>
#include <Carbon/Multiprocessing.h>
#include <Carbon/Processes.h>
#include <CoreFoundation/CoreFoundation.h>
