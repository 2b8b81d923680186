
$config['baseurlpath'] = 'https://saml.example.test/simplesamlphp/';
$config['certdir'] = '/etc/simplesamlphp/keys/';
$config['enable.saml20-idp'] = true;
$config['module.enable'] = ['core' => true, 'saml' => true, 'exampleauth' => true, 'consent' => true];
$config['authproc.idp'] = [90 => ['class' => 'consent:Consent']];
