import Provider from 'oidc-provider';

const provider = new Provider('https://oidc.example.test', {
  clients: [
    {
      client_id: 'desktop',
      token_endpoint_auth_method: 'none',
      redirect_uris: ['https://app.example.test/done', 'https://app.example.test/form'],
      response_types: ['code', 'code id_token'],
      grant_types: ['authorization_code', 'implicit'],
    },
  ],
  responseTypes: ['code', 'code id_token'],
});
provider.proxy = true;
provider.listen(8001, '127.0.0.1');
