#pragma once

#include "config/PropertyFile.h"
#include "log/config/ConfigurationKeys.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// An appender that a property file declares.
struct DeclaredAppender {
    std::string name;
    std::string className;           ///< as the library looks it up; empty if it finds none
    unsigned reader = 0;             ///< the class as a bit of `Log::KeyReaders`; 0 if there is no such class
    const PropertyLine* declaration; ///< the first one
};

/// What a key means to the library.
struct KeyMeaning {
    enum Kind {
        DECLARATION,         ///< of an appender
        SETTING,             ///< something reads it
        REFUSED_LOGGER,      ///< of a logger whose name is rejected, whatever the attribute
        CUSTOM_SETTING,      ///< of a class that the program registers, which may read any key
        FOREIGN_SETTING,     ///< only other appender classes read it
        UNDECLARED_APPENDER, ///< a setting of an appender that is not declared
        UNKNOWN
    };

    Kind kind = UNKNOWN;
    std::string owner;                          ///< the name of the appender; empty for other keys
    const Log::ConfigurationKey* row = nullptr; ///< of the library's table, for settings
};

/// A property file as the library interprets it.
class Configuration {
public:
    /// \param file must outlive this object
    explicit Configuration(const PropertyFile& file);

    const PropertyFile& file() const { return file_; }

    /// \return each declared appender once, in the order in which the library makes them
    const std::vector<DeclaredAppender>& appenders() const { return appenders_; }

    /// \return nullptr if no appender of that name is declared
    const DeclaredAppender* findAppender(const std::string& name) const;

    /// \return the setting of an appender; nullptr if the file does not have it
    const PropertyLine* setting(const DeclaredAppender& appender, const std::string& name) const;

    KeyMeaning meaningOf(const std::string& key) const;

    /// \return the key that a setting needs to have an effect; nullptr if the file has it, or if it needs none
    const Log::ConfigurationKey* missingPartner(const KeyMeaning& meaning) const;

    /// \return the row of the library's table for a setting that has an effect; nullptr for any other key
    const Log::ConfigurationKey* settingInEffect(const std::string& key) const;

    /// \return the full key of another setting of the same appender or of the dispatcher
    static std::string keyBeside(const KeyMeaning& meaning, const std::string& name);

    /// \return each logger that a key names and the library accepts, with the first line that does
    const std::map<std::string, const PropertyLine*>& loggers() const { return loggers_; }

private:
    void addLoggers(const PropertyLine& line);
    void addAppender(const PropertyLine& line);
    KeyMeaning meaningOfAppenderKey(const std::string& key) const;

    const PropertyFile& file_;
    std::vector<DeclaredAppender> appenders_;
    std::map<std::string, std::size_t> appendersByName_; ///< indices into `appenders_`
    std::map<std::string, const PropertyLine*> loggers_;
};

/// \return the later one of two lines
const PropertyLine& later(const PropertyLine& a, const PropertyLine& b);

/// \return the words that a key's value may be or hold, for example "KB"
std::vector<std::string> wordsOf(const Log::ConfigurationKey& key);

/// \return the names of all appender classes, including those given with "--class"
std::vector<std::string> appenderClasses();

} // namespace Tools
} // namespace ZAV
