#include "Demo.h"

#include <qv/qvcl3.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <unistd.h>

using namespace qv;

// Logs to standard error as text and to a file as XML, then prints the file.
void demoLog()
{
    section("Logging: text to standard error, XML to a file");
    const std::string path = "/tmp/qvcl3_demo_log_" + std::to_string(getpid()) + ".xml";
    {
        Reference<io::StdioOutputStream> err(new io::StdioOutputStream(true));
        Reference<io::OutputStreamWriter> errText(new io::OutputStreamWriter(err.get()));
        Reference<io::FileOutputStream> file(new io::FileOutputStream(String(path.c_str())));
        Reference<io::OutputStreamWriter> fileText(new io::OutputStreamWriter(file.get(), u"UTF-8"));

        Reference<log::Logger> logger = log::Logger::create(u"demo");
        logger->enableField(u"sequence", true);
        logger->enableField(u"timestamp", true);
        logger->addProcessor(log::BasicLogWriter::create(errText.get()).get());
        Reference<log::ILogProcessor> xml = log::XmlLogWriter::create(fileText.get());
        // Only level 2 and above reach the XML file.
        logger->addProcessor(log::LevelFilterProcessor::create(2, xml.get()).get());

        logger->log(1, u"starting");
        logger->log(2, u"disk 93% full");
        logger->log(u"at the default level 0");
        logger.reset();
        xml.reset();
        fileText->close();
    }
    std::ifstream in(path);
    std::stringstream all;
    all << in.rdbuf();
    std::cout << "log file " << path << ":\n" << all.str();
    std::remove(path.c_str());
}
