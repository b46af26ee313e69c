// Programs of the tests' own in the place of those that read files.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <string>

#include "standin/coreservices/content/content_reader.h"
#include "tests/support/scratch_folder.h"

namespace standin::metadata {

// What a file holds says what becomes of reading it: "refuse" ("refuse text", "refuse tags": by one of two),
// "part", "vanish", "end" (the reader ends), "hang", "slow N" (after so many milliseconds), "grow" (the file,
// too), "nul"; else `answer`, a term of perl, says what is in it.
inline ReaderPool::Options readerProgram(const ScratchFolder& scratch, const std::string& name,
                                         const std::string& answer, size_t processes) {
  const std::string path = scratch.file("programs/" + name, R"(#!/usr/bin/perl
$| = 1; $/ = "\0"; print "ready\n"; binmode STDOUT;
sub say_ { print "$_[0] " . length($_[1]) . "\n$_[1]" }
while (my $question = <STDIN>) {
  chomp $question;
  my ($format, $path) = $question =~ m{^(\w*) ?(/.*)}s;
  my $text = do { local $/; open my $file, '<', $path or (say_('unreadable', 'is gone'), next); <$file> };
  my $own = $format ? 'text' : 'tags';
  if ($text =~ /^refuse(?: $own|(?! text| tags))/) { say_('error', 'makes no sense'); next }
  if ($text =~ /^part/) { say_('part', "$format $text"); next }
  if ($text =~ /^vanish/) { unlink $path; say_('unreadable', 'is gone'); next }
  exit 1 if $text =~ /^end/;
  sleep 1000 if $text =~ /^hang/;
  if ($text =~ /^grow/) { open my $file, '>>', $path; print $file ' harbour'; close $file }
  select undef, undef, undef, $1 / 1000 if $text =~ /^slow (\d+)/;
  say_('ok', $text =~ /^nul/ ? "\0\1\2" : )" + answer + R"();
}
)");
  EXPECT_EQ(::chmod(path.c_str(), 0755), 0);
  ReaderPool::Options options;
  options.name = name + " program";
  options.program = path;
  options.package = name + "-package";
  options.processes = processes;
  options.timeToStart = options.timeToAnswer =
      std::chrono::minutes(1);  // a busy system is not what is tested
  return options;
}

// The text is the format and what the file holds.
inline ReaderPool::Options textProgram(const ScratchFolder& scratch, size_t processes = 1) {
  return readerProgram(scratch, "text", "\"$format $text\"", processes);
}

// The title is what the file holds. The program has the name of the one that is looked for in PATH.
inline ReaderPool::Options tagsProgram(const ScratchFolder& scratch, size_t processes = 1) {
  return readerProgram(scratch, "perl", "\"XMP:Title\\0$text\\0\"", processes);
}

}  // namespace standin::metadata
