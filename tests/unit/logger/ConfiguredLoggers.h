#pragma once

#include <memory>
#include <string>

#include <Poco/Message.h>
#include <gtest/gtest.h>

#include "logger/LoggerRegistry.h"
#include "unit/logger/Sandbox.h"

/// A registry over a configuration file, with a folder for the logs that it writes.
class ConfiguredLoggers : public ::testing::Test {
protected:
    void configure(const std::string& text)
    {
        write_file(m_places.chosen, text);
        m_registry = std::make_unique<zvlog::LoggerRegistry>(m_places);
    }

    /// Without any configuration file.
    void configure_nothing() { m_registry = std::make_unique<zvlog::LoggerRegistry>(m_places); }

    ZVPocoLogger& logger(const std::string& name)
    {
        return *m_registry->logger(name, zvlog::configured_level);
    }

    /// One line through the logger's channel, as the producer writes it.
    void write(const std::string& name, const std::string& text,
               Poco::Message::Priority priority = Poco::Message::PRIO_ERROR)
    {
        logger(name).getChannel()->log(Poco::Message(name, text, priority));
    }

    std::string default_log() const { return m_folder / "logs/zvgentl.log"; }

    Folder m_folder;
    zvlog::LoggerPlaces m_places{m_folder / "logger.properties", "", "", m_folder / "logs"};
    std::unique_ptr<zvlog::LoggerRegistry> m_registry;
};
