#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// Scopes. The pair of user and host scope chooses the file:
///   any user, current host      /Library/Preferences/DOMAIN.plist
///   current user, any host      ~/Library/Preferences/DOMAIN.plist
///   current user, current host  ~/Library/Preferences/ByHost/DOMAIN.HOSTID.plist
/// `~` is HOME or, when that is not an absolute path, the home folder of the user database; HOSTID is the machine's
/// identifier (/etc/machine-id), written like a UUID. Any user on any host is refused, as on a Mac that has no network
/// preferences, and so is any other user or host, and a domain that is empty or has a slash or a NUL: each call then
/// does nothing but write one line to standard error (and returns false or null).
const CF_EXPORT CFStringRef kCFPreferencesAnyUser;
const CF_EXPORT CFStringRef kCFPreferencesCurrentUser;
const CF_EXPORT CFStringRef kCFPreferencesAnyHost;
const CF_EXPORT CFStringRef kCFPreferencesCurrentHost;

/// Collects one change for the next CFPreferencesSynchronize of the same domain and scopes; nothing is written yet.
/// `key` is one literal key, whatever characters it has. A null `value` removes the key. The value is copied. Refused
/// with a line on standard error: a value that is not a property list (string, number, Boolean, date, data, array,
/// dictionary with strings for keys, 511 levels at most), and text or a key that has an unpaired surrogate.
CF_EXPORT void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                                     CFStringRef host);

/// A new reference to the value as a reader sees it now: a collected change if there is one, otherwise what the file
/// holds; null when there is none.
CF_EXPORT CFPropertyListRef CFPreferencesCopyValue(CFStringRef key, CFStringRef domain, CFStringRef user,
                                                   CFStringRef host);

/// Stores the collected changes of the domain in its file, a binary property list, and nothing else: other keys keep
/// their values. True when everything collected is on the disk (also when nothing was collected). When false, one line
/// on standard error says which file and why, and the changes stay collected for the next call. The file is then the
/// old one, or, if only the last flush failed, the new one, or none, if the old one was moved aside and the new one
/// could not take its place. Waits while another program writes in the same folder.
///
/// The file is replaced as a whole, readable by everyone, and belongs to its folder's owner; a missing folder is made.
/// A file that does not hold a dictionary, and a symbolic link, are moved aside, to DOMAIN.plist.corrupt-1 (-2, ...),
/// which a line on standard error says; a link's target is neither read nor written.
CF_EXPORT Boolean CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host);

CF_EXTERN_C_END
