# Composes messages, or takes them apart, with Email::MIME: email_mime.pl compose | read. A list as JSON
# comes in and goes out; bytes stand in it as base64.
use strict;
use warnings;
use Email::Address::XS;
use Email::MIME;
use Email::MIME::Header::AddressList;
use JSON::PP;
use MIME::Base64;

sub addresses {
    return Email::MIME::Header::AddressList->new(map { Email::Address::XS->new(@$_) } @_);
}

sub text_part {
    my ($type, $text, $message) = @_;
    return Email::MIME->create(
        attributes => { content_type => $type, charset => $message->{charset},
                        encoding => $message->{encoding} },
        body_str => $text);
}

sub compose {
    my ($message) = @_;
    my $forms = Email::MIME->create(
        attributes => { content_type => 'multipart/alternative' },
        parts => [ text_part('text/plain', $message->{text}, $message),
                   text_part('text/html', $message->{html}, $message) ]);
    my $file = Email::MIME->create(
        attributes => { content_type => 'application/octet-stream', encoding => 'base64',
                        disposition => 'attachment', filename => $message->{file} },
        body => decode_base64($message->{content}));
    my $mail = Email::MIME->create(
        header_str => [ From => addresses(@{ $message->{from} }), To => addresses(@{ $message->{to} }),
                        Subject => $message->{subject} ],
        attributes => { content_type => 'multipart/mixed' }, parts => [ $forms, $file ]);
    return encode_base64($mail->as_string, '');
}

sub names {
    my ($mail, $field) = @_;
    return [ map { [ $_->phrase // '', $_->address ] }
             $mail->header_as_obj($field, undef, 'Email::MIME::Header::AddressList')->addresses ];
}

sub take_apart {
    my $mail = Email::MIME->new(decode_base64($_[0]));
    my %found = (subject => $mail->header_str('Subject'), from => names($mail, 'From'),
                 to => names($mail, 'To'), files => []);
    $mail->walk_parts(sub {
        my ($part) = @_;
        return if $part->subparts;
        my ($type) = ($part->content_type // 'text/plain') =~ m{^([^;]+)};
        if (defined(my $name = $part->filename)) {
            my $id = $part->header('Content-ID') // '';
            push @{ $found{files} }, [ $name, encode_base64($part->body, ''), $type, $id ];
        } else {
            $found{$type} = $part->body_str;
        }
    });
    return \%found;
}

my $json = JSON::PP->new->ascii;
my $work = $ARGV[0] eq 'compose' ? \&compose : \&take_apart;
print $json->encode([ map { $work->($_) } @{ $json->decode(join '', <STDIN>) } ]);
