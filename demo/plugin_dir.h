// The host's plug-in folder: every module in it that exports the plug-in entry points
// joins the class directory.
#pragma once

#include <string>
#include <vector>

/// One module that LoadPlugins tried.
struct PluginLoad {
    std::string file;        // file name within the folder
    std::string description; // LibDescription, when it is a plug-in
    int classes;             // classes added; -1 when the file is not a plug-in module
};

/// The folder of the running program.
std::string ProgramFolder();
/// Loads every *.dll of `folder` through ClassDirectory::LoadPlugin, in name order.
std::vector<PluginLoad> LoadPlugins(const std::string& folder);
