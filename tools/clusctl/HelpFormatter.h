// Help texts as this tool words and lays them out.
#ifndef CLUSCTL_HELPFORMATTER_H
#define CLUSCTL_HELPFORMATTER_H

#include <CLI/App.hpp>

#include <string>

// Usage first, then what the manual says, arguments and options. Without notes on which option excludes which: the
// texts tell.
class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter();

    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
    // A family is listed as its members, under their full names.
    std::string make_subcommand(const CLI::App* app) const override;
    std::string make_option_name(const CLI::Option* option, bool isPositional) const override;
    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
};

#endif
