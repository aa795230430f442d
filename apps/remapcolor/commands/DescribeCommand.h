#pragma once

class CommandOptions;

/// What "describe" is asked to do.
struct DescribeRequest {
    enum class Form { Table, Json };

    Form form = Form::Table;
};

/// Adds the options of "describe", which fill `request`; it lives longer than `options`.
void addDescribeOptions(CommandOptions& options, DescribeRequest& request);

/// Prints the tool and its inputs, as the host knows them, to standard output. Throws
/// ToolLoadError, SurroundingsError.
void runDescribe(DescribeRequest const& request);
