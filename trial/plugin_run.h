/// The plug-in object in this process, driven as a host drives it.
#pragma once

#include "core/mail.h"
#include "trial/schemes.h"
#include "trial/workplace.h"

#include <functional>
#include <memory>

namespace trial {

class plugin_run
{
public:
    /// Loads the library beside this program; a QApplication must live. Throws evidence::evidence_error where that
    /// fails.
    explicit plugin_run(const scheme &source_scheme);
    ~plugin_run();

    /// A whole run over the source of the workplace, into its result folder. In: whether older rows are removed first.
    /// The cancel may come from another thread once the run has called `ready`.
    void run(const workplace &place, bool clears, const std::function<void()> &ready = {});
    void cancel() { plugin->pub_cancel_extraction(); }

private:
    const scheme &source_scheme;
    std::unique_ptr<mail> plugin;
};

} // namespace trial
