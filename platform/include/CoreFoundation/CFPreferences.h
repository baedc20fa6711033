#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// Scopes. The pair of user and host scope chooses the file:
///   any user, current host      /Library/Preferences/DOMAIN.plist
///   current user, any host      ~/Library/Preferences/DOMAIN.plist
///   current user, current host  ~/Library/Preferences/ByHost/DOMAIN.HOSTID.plist
/// Any user on any host is refused, as on a Mac that has no network preferences.
CF_EXPORT const CFStringRef kCFPreferencesAnyUser;
CF_EXPORT const CFStringRef kCFPreferencesCurrentUser;
CF_EXPORT const CFStringRef kCFPreferencesAnyHost;
CF_EXPORT const CFStringRef kCFPreferencesCurrentHost;

/// Collects one change for the next CFPreferencesSynchronize of the same domain and scopes; nothing is written yet.
/// `key` is one literal key, whatever characters it has. A null `value` removes the key. A value that is no property
/// list (string, number, boolean, date, data, array, dictionary) is refused with a line on standard error. The key and
/// the value are retained until they are stored.
CF_EXPORT void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                                     CFStringRef host);

/// A new reference to the value as a reader sees it now: a collected change if there is one, otherwise what the file
/// holds; null when there is none.
CF_EXPORT CFPropertyListRef CFPreferencesCopyValue(CFStringRef key, CFStringRef domain, CFStringRef user,
                                                   CFStringRef host);

/// Stores the collected changes of the domain in its file, a binary property list, and nothing else: other keys keep
/// their values. True when everything collected is on the disk (also when nothing was collected). When false, one line
/// on standard error says which file and why, the old file is as it was, and the changes stay collected for the next
/// call.
CF_EXPORT Boolean CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host);

CF_EXTERN_C_END
