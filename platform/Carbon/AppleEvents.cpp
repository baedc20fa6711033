#include <Carbon/AppleEvents.h>

#include <memory>

#include "platform/Carbon/AppleEventData.h"
#include "platform/Carbon/Errors.h"
#include "platform/Carbon/Finder.h"

namespace {

using cv::AppleEventParameter;
using Storage = OpaqueAEDataStorage;

constexpr OSType FINDER_SIGNATURE = CV_FOUR_CHAR_CODE('M', 'A', 'C', 'S');

Storage storageOfBytes(const void* data, Size byteCount) {
    Storage storage;
    const auto* bytes = static_cast<const UInt8*>(data);
    storage.bytes.assign(bytes, bytes + byteCount);
    return storage;
}

AppleEventParameter codeParameter(AEKeyword keyword, DescType type, FourCharCode code) {
    return {keyword, type, storageOfBytes(&code, sizeof code)};
}

AppleEventParameter descParameter(AEKeyword keyword, const AEDesc& desc) {
    return {keyword, desc.descriptorType, desc.dataHandle == nullptr ? Storage{} : *desc.dataHandle};
}

void giveOut(DescType type, Storage storage, AEDesc* result) {
    *result = {type, new Storage(std::move(storage))};
}

void giveOutNull(AEDesc* desc) {
    *desc = {typeNull, nullptr};
}

bool isBadBlock(const void* data, Size byteCount) {
    return byteCount < 0 || (data == nullptr && byteCount > 0);
}

bool isEvent(const AppleEvent* event) {
    return event->descriptorType == typeAppleEvent && event->dataHandle != nullptr &&
           !event->dataHandle->target.empty();
}

Storage newEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc& target) {
    Storage event;
    event.eventClass = eventClass;
    event.eventID = eventID;
    event.target.push_back(descParameter(0, target));
    return event;
}

void putParameter(Storage& event, AppleEventParameter parameter) {
    for (AppleEventParameter& present : event.parameters) {
        if (present.keyword == parameter.keyword) {
            present = std::move(parameter);
            return;
        }
    }
    event.parameters.push_back(std::move(parameter));
}

/// False for a time-out that means nothing.
bool readTimeout(SInt32 ticks, std::optional<std::chrono::milliseconds>& timeout) {
    using Ticks = std::chrono::duration<SInt64, std::ratio<1, 60>>;
    if (ticks == kAEDefaultTimeout) {
        timeout = std::chrono::minutes(1);
    } else if (ticks >= 0) {
        timeout = std::chrono::duration_cast<std::chrono::milliseconds>(Ticks(ticks));
    }
    return ticks >= kNoTimeOut;
}

}  // namespace

OSErr AECreateDesc(DescType type, const void* data, Size byteCount, AEDesc* result) {
    if (result == nullptr) {
        return paramErr;
    }
    giveOutNull(result);
    if (isBadBlock(data, byteCount)) {
        return paramErr;
    }
    return cv::orMemoryError([&] {
        giveOut(type, storageOfBytes(data, byteCount), result);
        return noErr;
    });
}

OSErr AEDisposeDesc(AEDesc* desc) {
    if (desc == nullptr) {
        return paramErr;
    }
    delete desc->dataHandle;
    giveOutNull(desc);
    return noErr;
}

OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc* target, AEReturnID,
                         AETransactionID, AppleEvent* result) {
    if (result == nullptr) {
        return paramErr;
    }
    giveOutNull(result);
    if (target == nullptr) {
        return paramErr;
    }
    return cv::orMemoryError([&] {
        giveOut(typeAppleEvent, newEvent(eventClass, eventID, *target), result);
        return noErr;
    });
}

OSErr AEPutParamPtr(AppleEvent* event, AEKeyword keyword, DescType type, const void* data, Size byteCount) {
    if (event == nullptr || isBadBlock(data, byteCount)) {
        return paramErr;
    }
    if (!isEvent(event)) {
        return errAENotAppleEvent;
    }
    return cv::orMemoryError([&] {
        putParameter(*event->dataHandle, {keyword, type, storageOfBytes(data, byteCount)});
        return noErr;
    });
}

OSErr AEPutParamDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* desc) {
    if (event == nullptr || desc == nullptr) {
        return paramErr;
    }
    if (!isEvent(event)) {
        return errAENotAppleEvent;
    }
    return cv::orMemoryError([&] {
        putParameter(*event->dataHandle, descParameter(keyword, *desc));
        return noErr;
    });
}

OSErr CreateObjSpecifier(DescType desiredClass, AEDesc* container, DescType keyForm, AEDesc* keyData,
                         Boolean disposeInputs, AEDesc* result) {
    AEDesc specifier{typeNull, nullptr};
    OSErr error = paramErr;
    if (container != nullptr && keyData != nullptr && result != nullptr) {
        error = cv::orMemoryError([&] {
            Storage parts;
            parts.parameters = {
                codeParameter(keyAEDesiredClass, typeType, desiredClass), descParameter(keyAEContainer, *container),
                codeParameter(keyAEKeyForm, typeEnumerated, keyForm), descParameter(keyAEKeyData, *keyData)};
            giveOut(typeObjectSpecifier, std::move(parts), &specifier);
            return noErr;
        });
    }
    if (disposeInputs) {
        AEDisposeDesc(container);
        AEDisposeDesc(keyData);
    }
    if (result != nullptr) {
        *result = specifier;
    }
    return error;
}

OSErr AESend(const AppleEvent* event, AppleEvent* reply, AESendMode mode, AESendPriority, SInt32 timeoutTicks,
             AEIdleUPP, AEFilterUPP) {
    if (reply != nullptr) {
        giveOutNull(reply);
    }
    std::optional<std::chrono::milliseconds> timeout;
    if (event == nullptr || reply == nullptr || mode != kAEWaitReply || !readTimeout(timeoutTicks, timeout)) {
        return paramErr;
    }
    if (!isEvent(event)) {
        return errAENotAppleEvent;
    }
    const AppleEventParameter& target = event->dataHandle->target.front();
    if (target.as<OSType>(typeApplSignature) != FINDER_SIGNATURE) {
        return procNotFound;
    }
    return cv::orMemoryError([&] {
        // Made beforehand: an item that was moved is never reported as one that was not.
        auto answer = std::make_unique<Storage>(newEvent(kCoreEventClass, kAEAnswer, {typeNull, nullptr}));
        const OSErr error = cv::handleFinderEvent(*event->dataHandle, timeout);
        if (error == noErr) {
            *reply = {typeAppleEvent, answer.release()};
        }
        return error;
    });
}
