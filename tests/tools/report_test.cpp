#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "run_program.h"

namespace utdata::test {
namespace {

/// The text of a script element of a page.
std::string Element(const std::string& page, const std::string& id) {
  const std::string opening = "id=\"" + id + "\">";
  const std::size_t begin = page.find(opening) + opening.size();
  return page.substr(begin, page.find("</script>", begin) - begin);
}

std::vector<std::uint8_t> FromBase64(const std::string& text) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::vector<std::uint8_t> bytes;
  std::uint32_t bits = 0;
  int held = 0;
  for (const char character : text) {
    if (character == '=') break;
    bits = bits << 6U | static_cast<std::uint32_t>(digits.find(character));
    held += 6;
    if (held < 8) continue;
    held -= 8;
    bytes.push_back(static_cast<std::uint8_t>(bits >> static_cast<unsigned>(held) & 0xFFU));
  }
  return bytes;
}

/// The values that a page carries, by the description of their packing.
std::vector<std::uint16_t> Unpack(const std::string& text, std::size_t quantity) {
  const std::vector<std::uint8_t> packed = FromBase64(text);
  std::vector<std::uint8_t> planes(2 * quantity);
  uLongf size = planes.size();
  EXPECT_EQ(uncompress(planes.data(), &size, packed.data(), packed.size()), Z_OK);
  EXPECT_EQ(size, planes.size());
  std::vector<std::uint16_t> values;
  std::uint16_t value = 0;
  for (std::size_t index = 0; index < quantity; ++index) {
    value = static_cast<std::uint16_t>(value + planes[index] + 256 * planes[quantity + index]);
    values.push_back(value);
  }
  return values;
}

class ReportTest : public ProgramTest {
 protected:
  void Import(const std::string& more = "") const {
    std::string bytes;
    for (std::uint32_t sample = 0; sample < 2 * 3 * 500; ++sample) {
      const std::uint32_t value = sample * 2654435761U >> 16U;
      bytes += {static_cast<char>(value & 0xFFU), static_cast<char>(value >> 8U & 0xFFU)};
    }
    WriteFile(At("scan.raw"), bytes);
    ASSERT_EQ(
        Run("import scan.raw -o scan.fpd --axes row,column,sample --shape 2,3,500 --dtype u16 " +
            more)
            .status,
        0);
  }

  [[nodiscard]] nlohmann::json Facts() const {
    return nlohmann::json::parse(Element(ReadFile(At("page.html")), "facts"), nullptr, false);
  }
};

TEST_F(ReportTest, CarriesEverySample) {
  Import("--big-endian --rectified");
  ASSERT_EQ(Run("report scan.fpd -o page.html").status, 0);
  const nlohmann::json view = Facts()["views"][0];
  const std::string id = "values" + std::to_string(view["ascans"].get<int>());
  const std::vector<std::uint16_t> values = Unpack(Element(ReadFile(At("page.html")), id), 3000);
  const std::string bytes = ReadFile(At("scan.raw"));
  for (std::size_t sample = 0; sample < values.size(); ++sample) {
    const auto high = static_cast<std::uint8_t>(bytes[2 * sample]);
    const auto low = static_cast<std::uint8_t>(bytes[2 * sample + 1]);
    ASSERT_EQ(values[sample], 256 * high + low) << "sample " << sample;
  }
}

TEST_F(ReportTest, KeepsToItsLimitAndSaysSo) {
  Import("--rectified");
  const ProgramResult result = Run("report scan.fpd -o page.html --limit 0");
  ASSERT_EQ(result.status, 0);
  EXPECT_NE(result.out.find("only the largest amplitude of each A-scan"), std::string::npos)
      << result.out;
  const nlohmann::json facts = Facts();
  EXPECT_TRUE(facts["views"][0]["ascans"].is_null());
  EXPECT_EQ(facts["missing"].size(), 1U);
  const std::vector<std::uint16_t> peaks = Unpack(Element(ReadFile(At("page.html")), "values0"), 6);
  EXPECT_GT(*std::min_element(peaks.begin(), peaks.end()), 60000);
}

/// Each pixel of a top, side or end view names the sample that it shows, whether or not the page
/// carries the samples.
TEST_F(ReportTest, TracesThePixelsOfTheViewsOfThePart) {
  Import(
      "--rectified --sound-speed 3000 --probe-angle 45 --thickness 10 --column-step 2 --row-step 5 "
      "--sample-step 50");
  const std::string bytes = ReadFile(At("scan.raw"));
  const auto sampleAt = [&](std::size_t at) {
    return static_cast<std::uint8_t>(bytes[2 * at]) +
           256 * static_cast<std::uint8_t>(bytes[2 * at + 1]);
  };
  for (const char* limit : {"", " --limit 0"}) {
    ASSERT_EQ(Run(std::string("report scan.fpd --force -o page.html") + limit).status, 0);
    const nlohmann::json projection = Facts()["projections"][0];
    EXPECT_EQ(projection["beams"][0]["view"], 0);
    for (const char* view : {"top", "side", "end"}) {
      const nlohmann::json& shown = projection[view];
      const std::size_t quantity = shown["across"]["quantity"].get<std::size_t>() *
                                   shown["down"]["quantity"].get<std::size_t>();
      const std::string id = "values" + std::to_string(shown["pixels"].get<int>());
      const auto tables = Unpack(Element(ReadFile(At("page.html")), id), 5 * quantity);
      std::size_t filled = 0;
      std::uint16_t strongest = 0;
      for (std::size_t pixel = 0; pixel < quantity; ++pixel) {
        if (tables[pixel] == 0) continue;
        ++filled;
        ASSERT_EQ(tables[pixel], 1);
        const std::size_t cell =
            tables[2 * quantity + pixel] + 65536U * tables[3 * quantity + pixel];
        const std::uint16_t value = tables[4 * quantity + pixel];
        ASSERT_EQ(value, sampleAt(500 * cell + tables[quantity + pixel])) << view << pixel;
        strongest = std::max(strongest, value);
      }
      EXPECT_GT(filled, quantity / 4) << view;
      int largest = 0;
      for (std::size_t at = 0; at < 3000; ++at) largest = std::max(largest, sampleAt(at));
      EXPECT_EQ(strongest, largest) << view;
    }
  }
}

TEST_F(ReportTest, GrowsLittleWithTheLengthOfAScan) {
  constexpr int rows = 5000;
  WriteFile(At("scan.raw"), std::string(std::size_t{rows} * 20, '\7'));
  ASSERT_EQ(Run("import scan.raw -o scan.fpd --axes row,sample --shape 5000,20 --dtype u8 "
                "--rectified --row-step 1 --sample-step 50 --sound-speed 3000 --probe-angle 45")
                .status,
            0);
  ASSERT_EQ(Run("report scan.fpd -o page.html").status, 0);
  const nlohmann::json projection = Facts()["projections"][0];
  EXPECT_EQ(projection["top"]["down"]["quantity"], 880);
  EXPECT_EQ(projection["side"]["across"]["quantity"], 880);
}

TEST_F(ReportTest, ShowsSpecimenSetUpAndHistory) {
  ASSERT_EQ(Run("demo --out . --force").status, 0);
  ASSERT_EQ(Run("edit weld.fpd channel channel=0 gain=40 name='</script>' --as append").status, 0);
  ASSERT_EQ(Run("report weld.fpd -o page.html").status, 0);
  const nlohmann::json facts = Facts();
  ASSERT_FALSE(facts.is_discarded());
  const auto table = [&](const std::string& title) {
    for (const nlohmann::json& each : facts["tables"])
      if (each["title"] == title) return each["rows"].dump();
    return std::string();
  };
  EXPECT_NE(table("Specimen dimensions").find(R"(["thickness","20 mm"])"), std::string::npos);
  EXPECT_NE(table("Specimen material").find("5920 m/s"), std::string::npos);
  EXPECT_NE(table("Channel 0").find(R"(["gain","40 dB"])"), std::string::npos);
  EXPECT_NE(table("Gate 1 of channel 0").find(R"(["start","1.2 µs"])"), std::string::npos);
  std::string told;
  for (const nlohmann::json& event : facts["history"])
    told += event["file"].get<std::string>() + " " + event["reason"].get<std::string>() + " " +
            event["changes"].dump() + "\n";
  EXPECT_NE(told.find("weld.A01 gate moved to the flaws "), std::string::npos) << told;
  for (const char* change : {R"({"after":"1.2 µs","before":"1 µs","field":"start"})",
                             R"({"after":"40 dB","before":"38 dB","field":"gain"})",
                             R"({"after":"\"</script>\"","before":"\"\"","field":"name"})"})
    EXPECT_NE(told.find(change), std::string::npos) << change << "\n" << told;
}

TEST_F(ReportTest, LeavesOutWhatItCannotDraw) {
  Import("--rectified");
  const std::set<std::string> before = Names();
  ExpectOneLine(Run("report scan.fpd -o scan.fpd --force"), 1, "it is the inspection file itself");
  ExpectOneLine(Run("report scan.fpd -o scan.raw"), 1, "the file exists");
  ExpectOneLine(Run("report scan.raw -o page.html"), 1, "scan.raw");
  ExpectOneLine(Run("report scan.fpd -o page.html --limit -1"), 2, "--limit");
  EXPECT_EQ(Names(), before);
}

}  // namespace
}  // namespace utdata::test
