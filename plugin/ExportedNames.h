#pragma once

// The names of the bundle's exported functions and data, and of nothing else that it has. The build takes the linker's
// list and what Info.plist says from these lines (Interface.cmake).

constexpr const char* XCOD_FACTORY_NAME = "MyFactory";         ///< the factory function
constexpr const char* XCOD_PRE_INSTALL_NAME = "PreInstall";    ///< a step's function
constexpr const char* XCOD_POST_INSTALL_NAME = "PostInstall";  ///< a step's function
constexpr const char* XCOD_PLUGIN_ID_NAME = "g_cvPluginID";    ///< a 32-bit integer

constexpr const char* XCOD_EXPORTED_NAMES[] = {XCOD_FACTORY_NAME, XCOD_POST_INSTALL_NAME, XCOD_PRE_INSTALL_NAME,
                                               XCOD_PLUGIN_ID_NAME};
