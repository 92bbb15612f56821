// demo_host: a small host application for the curve control.
//
//   demo_host                 the host for a person: work in it, close it when done
//   demo_host --script DIR    a scripted session that checks itself and writes its
//                             screenshots and saved scene into DIR
//
// Plug-ins are the modules beside the program (curvectl.dll, sample_client.dll): every
// one that exports the plug-in entry points joins the class directory, and the scene's
// effect is the first view effect found there.
#include "host/class_desc.h"
#include "host_app.h"
#include "plugin_dir.h"
#include "session/session.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

int Usage() {
    std::fprintf(stderr, "usage: demo_host [--script FOLDER]\n");
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    std::string scriptFolder;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--script") == 0 && i + 1 < argc)
            scriptFolder = argv[++i];
        else
            return Usage();
    }

    for (const PluginLoad& load : LoadPlugins(ProgramFolder()))
        if (load.classes >= 0)
            std::printf("Plug-in %s: \"%s\", %d class%s\n", load.file.c_str(),
                        load.description.c_str(), load.classes, load.classes == 1 ? "" : "es");
    std::fflush(stdout);

    HostApp app;
    if (!app.Create(true, 0, 0, 1040, 740)) {
        std::fprintf(stderr, "demo_host: could not create the main window\n");
        return 1;
    }
    if (!app.Scene().Effect()) {
        std::fprintf(stderr, "demo_host: no plug-in offers a view effect (is "
                             "sample_client.dll beside the program?)\n");
        if (!scriptFolder.empty())
            return 1;
    }
    if (!scriptFolder.empty())
        return RunScriptedSession(app, scriptFolder);
    return app.Run();
}
