// How exceptions become an exit status and one line.

#include "remapcolor/Failures.h"

#include "base/HostException.h"
#include "media/ImageFiles.h"
#include "runtime/loader/ToolLoader.h"
#include "runtime/values/HostValue.h"

#include <algorithm>
#include <new>
#include <system_error>

namespace {

Failure makeFailure(ExitStatus status, std::string const& text)
{
    return {static_cast<int>(status), makePrintable(text)};
}

ExitStatus toStatus(ImageFailure kind)
{
    switch (kind) {
    case ImageFailure::Request: return ExitStatus::WrongRequest;
    case ImageFailure::File: return ExitStatus::PictureFailed;
    case ImageFailure::Surroundings: return ExitStatus::Surroundings;
    }
    return ExitStatus::PictureFailed;
}

Failure describeInterruption(int signal)
{
    return {static_cast<int>(ExitStatus::SignalReceived) + signal,
            "stopped by signal " + std::to_string(signal) + "; nothing was written"};
}

} // namespace

Failure describeCurrentFailure()
{
    try {
        throw;
    } catch (Interrupted const& interruption) {
        return describeInterruption(interruption.signal);
    } catch (UsageError const& error) {
        return makeFailure(ExitStatus::WrongRequest, error.what());
    } catch (ValueError const& error) {
        return makeFailure(ExitStatus::WrongRequest, error.what());
    } catch (ImageFileError const& error) {
        return makeFailure(toStatus(error.getKind()), error.what());
    } catch (SurroundingsError const& error) {
        return makeFailure(ExitStatus::Surroundings, error.what());
    } catch (ToolLoadError const& error) {
        return makeFailure(ExitStatus::Surroundings, error.what());
    } catch (std::bad_alloc const&) {
        return makeFailure(ExitStatus::Surroundings,
                           "out of memory; close other programs or use fewer --threads");
    } catch (std::system_error const& error) {
        return makeFailure(ExitStatus::Surroundings,
                           std::string("the system refused: ") + error.what());
    } catch (std::exception const& error) {
        return makeFailure(ExitStatus::PictureFailed,
                           std::string("internal fault, please report it: ") + error.what());
    } catch (...) {
        return makeFailure(ExitStatus::PictureFailed, "internal fault, please report it");
    }
}

std::string makePrintable(std::string text)
{
    constexpr unsigned char deleteCharacter = 127;
    std::replace_if(
        text.begin(), text.end(),
        [](unsigned char character) { return character < ' ' || character == deleteCharacter; },
        '?');
    return text;
}

std::string quote(std::string const& text)
{
    return "\"" + text + "\"";
}
