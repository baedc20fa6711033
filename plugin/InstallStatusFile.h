#pragma once

// The install-status file, which an earlier part of the installation leaves for the post-install step.

/// Where it lies.
constexpr char INSTALL_STATUS_FILE[] = "/Library/Application Support/Corvane/Updater/install_status.txt";

/// The user wants automatic updates when the file's text begins with this word, and none when it begins with anything
/// else.
constexpr char UPDATES_ENABLED[] = "UpdatesEnabled";
