<?php
$metadata['https://saml.example.test/idp'] = [
    'host' => '__DEFAULT__',
    'privatekey' => 'server.key',
    'certificate' => 'server.crt',
    'auth' => 'users',
    'SingleSignOnServiceBinding' => [
        'urn:oasis:names:tc:SAML:2.0:bindings:HTTP-Redirect',
        'urn:oasis:names:tc:SAML:2.0:bindings:HTTP-POST',
    ],
    'saml20.sign.assertion' => true,
    'saml20.sign.response' => true,
];
