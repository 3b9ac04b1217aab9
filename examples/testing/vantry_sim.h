// A vantry-sim of its own for each class of tests, and at the start of each test as it was in the beginning.
#pragma once

#include <curl/curl.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

class VantrySim : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    char pattern[] = "/tmp/vantry-sim-XXXXXX";
    directory = mkdtemp(pattern);
    const std::string command = "echo $$; exec \"$VANTRY_SIM\" --port 0 --admin-port 0 --data " + directory +
                                "/data --seed file:" BICYCLES;
    output = popen(command.c_str(), "r");
    ASSERT_NE(output, nullptr);
    char own[200], control[200];
    ASSERT_EQ(fscanf(output, "%d vantry-sim listening on %199s admin on %199s", &server, own, control), 3);
    url = own, admin = control;
  }
  static void TearDownTestSuite() {
    // Signals to -1 go to every process of the user.
    if (server > 0) kill(server, SIGTERM);
    if (output != nullptr) pclose(output);
    std::filesystem::remove_all(directory);
  }
  void SetUp() override { Control("POST", "reset"); }

  // Asks the admin port, and gives its answer.
  static std::string Control(const char* method, const std::string& path, const std::string& body = {}) {
    std::string answer;
    CURL* const curl = curl_easy_init();
    curl_easy_setopt(curl, CURLOPT_URL, (admin + path).c_str());
    curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, method);
    if (!body.empty()) curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.c_str());
    curl_easy_setopt(curl, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer);
    curl_easy_setopt(
        curl, CURLOPT_WRITEFUNCTION, +[](char* data, size_t, size_t size, void* to) {
          static_cast<std::string*>(to)->append(data, size);
          return size;
        });
    EXPECT_EQ(curl_easy_perform(curl), CURLE_OK) << method << " " << path;
    curl_easy_cleanup(curl);
    return answer;
  }

  inline static std::string directory, url, admin;
  inline static pid_t server = -1;
  inline static FILE* output = nullptr;
};
