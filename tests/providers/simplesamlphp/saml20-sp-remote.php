<?php
$metadata['https://app.example.test/saml'] = [
    'AssertionConsumerService' => 'https://app.example.test/acs',
    'simplesaml.nameidattribute' => 'uid',
    'NameIDFormat' => 'urn:oasis:names:tc:SAML:1.1:nameid-format:unspecified',
];
