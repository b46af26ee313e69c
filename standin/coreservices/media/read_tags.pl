# Reads the tags of files: those that are named by the arguments ("Group:Name", or "Name" for whichever group
# exiftool itself prefers, with a # after it where the value is wanted as a number rather than in words, with
# a + where a document may have several such tags with a value each, and all of them are wanted), of
# files whose paths come on standard input, each ended by a zero byte. See readers/reader_pool.h for what it
# prints. What it says of a file are texts, each ended by a zero byte: a tag with its group, and then a value;
# a tag with several values stands before each of them.
#
# It asks exiftool's library, because the program exiftool turns all that it finds into words and numbers,
# which takes longer than finding it.
use strict;

BEGIN {
    # The library that lies beside the program comes first, as the program has it; the user's own configuration
    # must not change what is read.
    my $program = shift @ARGV;
    (my $folder = $program) =~ s{/[^/]*$}{};
    unshift @INC, "$folder/lib" if -e "$folder/lib/Image/ExifTool.pm";
    no warnings 'once';
    $Image::ExifTool::configFile = '';
}
use Image::ExifTool;
require Image::ExifTool::XMP;

my (%wanted, %numeric, %repeated);
for (@ARGV) {
    my ($tag, $number, $all) = /^(.*?)(#?)(\+?)$/;
    $wanted{$tag} = 1;
    $numeric{$tag} = 1 if $number;
    $repeated{$tag} = 1 if $all;
}
my %wantedName = map { (split /:/)[-1] => 1 } keys %wanted;

my $exiftool = Image::ExifTool->new;
$exiftool->Options(Charset => 'UTF8', QuickTimeUTC => 1, LargeFileSupport => 1, List => 1, Duplicates => 1);

# Of tags with one name in one group, the last one of the highest priority is meant.
sub isBetter {
    my ($tag, $than) = @_;
    my $priority = $$exiftool{PRIORITY};
    my $order = $$exiftool{FILE_ORDER};
    my ($first, $second) = $$order{$tag} < $$order{$than} ? ($tag, $than) : ($than, $tag);
    my $least = $$priority{$first} || 1;
    my $its = $$priority{$second};
    $its = 1 unless defined $its;
    return ($its >= $least) == ($second eq $tag);
}

sub bytesOf {
    my ($tag, $key) = @_;
    my $numeric = $numeric{$tag} || $numeric{(split /:/, $tag)[-1]};
    my $value = $exiftool->GetValue($key, $numeric ? 'ValueConv' : 'PrintConv');
    my $bytes = '';
    for my $each (ref $value eq 'ARRAY' ? @$value : $value) {
        next if !defined $each or ref $each;    # binary data
        my $text = $each;
        utf8::encode($text) if utf8::is_utf8($text);
        $text =~ tr/\0//d;
        Image::ExifTool::XMP::FixUTF8(\$text) if $text =~ /[\x80-\xff]/;
        $bytes .= "$tag\0$text\0";
    }
    return $bytes;
}

sub tagsOf {
    my ($path) = @_;
    $exiftool->ExtractInfo($path);
    # An unknown format has no tags; what can't be read may have some.
    my $error = $exiftool->GetValue('Error');
    die "$error\n" if defined $error and $error =~ /\b(open|read)ing\b/;
    # Elsewhere a tag that is there twice is an older state, or another copy of the same.
    my $isDocument = ($exiftool->GetValue('FileType') || '') =~ /^(OD[A-Z]|EPUB|X?HTML)$/;
    my (%chosen, %all);
    for my $key ($exiftool->GetFoundTags('Input')) {
        (my $name = $key) =~ s/ \(.*//;
        next unless $wantedName{$name};
        my $tag = $exiftool->GetGroup($key, 0) . ":$name";
        # A name alone means the tag that has no number after it.
        next unless $wanted{$tag} or ($wanted{$name} and $key eq $name);
        push @{$all{$tag}}, $key if $isDocument and $repeated{$tag};
        $chosen{$tag} = $key if !defined $chosen{$tag} or isBetter($key, $chosen{$tag});
    }
    my $order = $$exiftool{FILE_ORDER};
    my $bytes = '';
    for my $tag (sort keys %chosen) {
        my @keys = sort { $$order{$a} <=> $$order{$b} } @{$all{$tag} || [$chosen{$tag}]};
        $bytes .= bytesOf($tag, $_) for @keys;
    }
    return $bytes;
}

sub answer {
    my ($word, $bytes) = @_;
    print "$word " . length($bytes) . "\n$bytes";
}

binmode STDIN;
binmode STDOUT;
$| = 1;
$/ = "\0";
print "ready\n";
while (my $path = <STDIN>) {
    chomp $path;
    my $opened = open my $file, '<', $path;
    answer('unreadable', "can't be opened: $!"), next unless $opened;
    close $file;
    my $bytes = eval { tagsOf($path) };
    defined $bytes ? answer('ok', $bytes) : answer('unreadable', "exiftool can't read it");
}
